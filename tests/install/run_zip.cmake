# Packs the ZIP, unpacks it in a fresh folder, and runs the inspection program there with nothing else on the path.
cmake_minimum_required(VERSION 3.20)

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK_DIR}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
run(${CPACK} --config "${BUILD_DIR}/CPackConfig.cmake" -B "${WORK_DIR}")
file(GLOB zip "${WORK_DIR}/*.zip")
run(${CMAKE_COMMAND} -E tar xf "${zip}")
file(GLOB folder "${WORK_DIR}/orxfunctions-*-windows-x64")

foreach(part include/orxFunctions/orxfunctions.h include/orxFunctions/vision_driver.h include/opencv4/opencv2/core.hpp
    lib/liborxFunctions.dll.a lib/libopencv_core460.dll.a bin/TQVisionDriver.dll bin/LumoCfg.dll bin/zlib1.dll
    bin/orx_viewer.exe bin/orx_plates.exe share/doc/orxFunctions/README.md
    share/doc/orxFunctions/docs/images/measured-scene.png share/doc/orxFunctions/examples/CMakeLists.txt share/licenses/orxFunctions/LICENSE share/licenses/opencv/copyright)
  string(REPLACE "460" "*" pattern "${part}")
  file(GLOB found "${folder}/${pattern}")
  if(NOT found)
    message(FATAL_ERROR "the ZIP lacks ${part}")
  endif()
endforeach()

set(ENV{WINEPATH} "")
run(${EMULATOR} "${folder}/bin/orx_inspection.exe" --synthetic 7 --output "out")
if(NOT output MATCHES "1 measured, 0 failed" OR NOT EXISTS "${WORK_DIR}/out/report.html")
  message(FATAL_ERROR "the unpacked program says:\n${output}")
endif()
