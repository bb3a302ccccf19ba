# Installs into a fresh prefix, then configures, builds and runs a stranger's project against it: once through the CMake
# package and once through pkg-config.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_greeting output)
  if(NOT output MATCHES "orxFunctions ${VERSION}: level 50, circle 100.0 80.0 40.0")
    message(FATAL_ERROR "the consumer printed something else:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")

run(${CMAKE_COMMAND} -S "${CONSUMER_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
  "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DEXPECTED_VERSION=${VERSION}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
expect_greeting("${output}")

find_program(PKG_CONFIG pkg-config)
if(NOT PKG_CONFIG)
  message(STATUS "pkg-config is not installed: that way was left out")
  return()
endif()
set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
run(${PKG_CONFIG} --cflags --libs orxFunctions)
string(STRIP "${output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++17 "${CONSUMER_DIR}/consumer.cpp" -o "${WORK_DIR}/by-pkg-config" ${flags}
  "-Wl,-rpath,${prefix}/${LIBDIR}")
run("${WORK_DIR}/by-pkg-config")
expect_greeting("${output}")
