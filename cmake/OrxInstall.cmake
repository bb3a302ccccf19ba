# Installation: libraries, headers, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS orxFunctions ZULLib
  EXPORT orxFunctionsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
set_target_properties(ZULLib PROPERTIES INSTALL_RPATH "$ORIGIN")
install(EXPORT orxFunctionsTargets
  NAMESPACE orxFunctions::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxFunctions)

get_property(headers GLOBAL PROPERTY ORX_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
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
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxFunctions)

file(RELATIVE_PATH ORX_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" ORX_PC_PREFIX "${ORX_PC_PREFIX}")
configure_file(cmake/orxFunctions.pc.in "${PROJECT_BINARY_DIR}/orxFunctions.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/orxFunctions.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
