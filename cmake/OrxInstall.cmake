# Installation in components: runtime (the libraries and modules), development (headers, the CMake package, the pkg-config
# file), tools (the programs), documentation (guides, the site where it is built, and the examples as sources) and, where it
# is built, python.
include(CMakePackageConfigHelpers)

set_target_properties(ZULLib PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS orxFunctions ZULLib
  EXPORT orxFunctionsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(EXPORT orxFunctionsTargets
  NAMESPACE orxFunctions::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxFunctions
  COMPONENT development)

# orx_tools(<variable>): the programs of examples/, but for those that need a toolkit: that is found on some machines
# only, and what is installed must not hang on it.
function(orx_tools variable)
  set(tools "")
  if(IS_DIRECTORY "${PROJECT_BINARY_DIR}/examples" AND ORX_BUILD_EXAMPLES)
    get_property(folders DIRECTORY examples PROPERTY SUBDIRECTORIES)
    foreach(folder IN LISTS folders)
      get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
      foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        get_target_property(on_demand ${target} EXCLUDE_FROM_ALL)
        get_target_property(toolkit ${target} ORX_NEEDS_TOOLKIT)
        if(type STREQUAL "EXECUTABLE" AND NOT on_demand AND NOT toolkit)
          list(APPEND tools ${target})
        endif()
      endforeach()
    endforeach()
  endif()
  set(${variable} "${tools}" PARENT_SCOPE)
endfunction()

orx_tools(tools)
foreach(tool IN LISTS tools)
  set_target_properties(${tool} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endforeach()

if(ORX_BUILD_PYTHON)
  set(ORX_PYTHON_FOLDER lib/python3/dist-packages CACHE STRING "Where Python looks for packages, below the prefix")
  file(RELATIVE_PATH libraries "/${ORX_PYTHON_FOLDER}/orxfunctions" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(_core PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
  install(TARGETS _core LIBRARY DESTINATION ${ORX_PYTHON_FOLDER}/orxfunctions COMPONENT python)
  install(DIRECTORY python/orxfunctions DESTINATION ${ORX_PYTHON_FOLDER} COMPONENT python
    FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN py.typed PATTERN __pycache__ EXCLUDE)
endif()

# As in this tree, so that links between them hold; a new guide or example is found when it is installed.
install(FILES LICENSE README.md CHANGELOG.md CONTRIBUTING.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.png" PATTERN "*.jpg" PATTERN "*.svg"
  PATTERN tools EXCLUDE PATTERN site EXCLUDE)
install(DIRECTORY docs/guides DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT documentation
  PATTERN __pycache__ EXCLUDE)
# The site and the pictures of the guides, where scripts/docs has made them.
set(ORX_BUILT_DOCS "${PROJECT_SOURCE_DIR}/build/docs" CACHE PATH "Where scripts/docs has built the site, which is installed if it is there")
if(EXISTS "${ORX_BUILT_DOCS}/site/index.html")
  message(STATUS "Installed with the documentation: the site in ${ORX_BUILT_DOCS}, as scripts/docs last made it")
endif()
install(DIRECTORY "${ORX_BUILT_DOCS}/site/" DESTINATION ${CMAKE_INSTALL_DOCDIR}/html COMPONENT documentation OPTIONAL
  PATTERN .buildinfo EXCLUDE PATTERN objects.inv EXCLUDE)
install(DIRECTORY "${ORX_BUILT_DOCS}/source/guides/pictures" DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs/guides
  COMPONENT documentation OPTIONAL FILES_MATCHING PATTERN "*.png")
install(FILES drivers/README.md drivers/vision_driver.h
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/drivers COMPONENT documentation)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY python/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}/python COMPONENT documentation
  PATTERN __pycache__ EXCLUDE)

get_property(headers GLOBAL PROPERTY ORX_PUBLIC_HEADERS)
get_property(toolkit_headers GLOBAL PROPERTY ORX_TOOLKIT_HEADERS)
foreach(header IN LISTS headers toolkit_headers)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}" COMPONENT development)
endforeach()
string(REPLACE ";" "\n" lines "${headers}")
file(GENERATE OUTPUT "${PROJECT_BINARY_DIR}/public-headers.txt" CONTENT "${lines}\n")

configure_package_config_file(cmake/orxFunctionsConfig.cmake.in
  "${PROJECT_BINARY_DIR}/orxFunctionsConfig.cmake"
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxFunctions)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/orxFunctionsConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/orxFunctionsConfig.cmake"
  "${PROJECT_BINARY_DIR}/orxFunctionsConfigVersion.cmake"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxFunctions
  COMPONENT development)

file(RELATIVE_PATH ORX_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" ORX_PC_PREFIX "${ORX_PC_PREFIX}")
configure_file(cmake/orxFunctions.pc.in "${PROJECT_BINARY_DIR}/orxFunctions.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/orxFunctions.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

if(MINGW)
  # A machine without a compiler runs the programs, and one with it builds on the very OpenCV that they were built on.
  install(FILES ${ORX_WINDOWS_RUNTIME} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
  foreach(part include/opencv4 lib/cmake/opencv4)
    install(DIRECTORY "${ORX_WINDOWS_DEPENDENCIES}/${part}/" DESTINATION ${part} COMPONENT development)
  endforeach()
  install(DIRECTORY "${ORX_WINDOWS_DEPENDENCIES}/lib/" DESTINATION lib COMPONENT development
    FILES_MATCHING PATTERN "libopencv_*.dll.a" PATTERN cmake EXCLUDE PATTERN pkgconfig EXCLUDE PATTERN libpng EXCLUDE)
  install(DIRECTORY "${ORX_WINDOWS_DEPENDENCIES}/share/licenses" DESTINATION share COMPONENT runtime)
  install(FILES LICENSE DESTINATION share/licenses/orxFunctions COMPONENT runtime)
endif()

include(OrxPackages)
