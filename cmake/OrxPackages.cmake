# cpack: one ZIP for Windows, elsewhere a Debian package for each component.
set(CPACK_PACKAGE_NAME orxfunctions)
set(CPACK_PACKAGE_VENDOR "the orxFunctions developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_COMPONENTS_ALL runtime development tools documentation)
if(ORX_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_STRIP_FILES ON)
# Whatever the mask of who packs: equal builds give equal packages.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME "orxfunctions-${PROJECT_VERSION}-windows-x64")
else()
  set(library_package liborxfunctions${PROJECT_VERSION_MAJOR})
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "the orxFunctions developers <orxfunctions@localhost>")
  # What the programs and libraries need is read from them; ours are found in the build tree.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (libraries)")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborxfunctions-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}), libopencv-dev")
  set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development files)")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS orxfunctions-doc)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME orxfunctions-tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS orxfunctions-doc)
  set(CPACK_COMPONENT_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION} (programs)")
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME orxfunctions-doc)
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SUGGESTS liborxfunctions-dev)
  set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION "${PROJECT_DESCRIPTION} (guides, and programs as sources)")

  if(ORX_BUILD_PYTHON)
    # A compiled module serves one version of Python.
    execute_process(COMMAND "${PYTHON_EXECUTABLE}" -c "import sys; print('%d.%d' % sys.version_info[:2], end='')"
      OUTPUT_VARIABLE python_version COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCH "^([0-9]+)\\.([0-9]+)$" python_version "${python_version}")
    math(EXPR next "${CMAKE_MATCH_2} + 1")
    set(python_range "python3 (>= ${python_version}), python3 (<< ${CMAKE_MATCH_1}.${next})")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orxfunctions)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
      "${library_package} (= ${PROJECT_VERSION}), ${python_range}, python3-numpy")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-opencv, python3-ipywidgets, python3-distributed, python3-psycopg2, orxfunctions-doc")
    set(CPACK_COMPONENT_PYTHON_DESCRIPTION "${PROJECT_DESCRIPTION} (Python package)")
    # They compile the package for Python, and remove what that made.
    set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
      "${PROJECT_SOURCE_DIR}/python/debian/postinst;${PROJECT_SOURCE_DIR}/python/debian/prerm")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
  endif()
endif()

# orx_package_papers(<component> <package> FILE...): what Debian wants beside a package, its licence; and the list of what
# it needs, with versions and licences, from those files and dpkg's facts at the time of packing.
function(orx_package_papers component package)
  set(folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}")
  install(FILES LICENSE DESTINATION ${folder} RENAME copyright COMPONENT ${component})
  list(JOIN ARGN "\" \"" files)
  install(CODE "
    set(list \"${PROJECT_BINARY_DIR}/${package}.spdx\")
    execute_process(
      COMMAND \"${PROJECT_SOURCE_DIR}/scripts/list-dependencies\" ${package} ${PROJECT_VERSION} \"${files}\"
      OUTPUT_FILE \"\${list}\" RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR \"scripts/list-dependencies failed for ${package}: \${status}\")
    endif()
    file(INSTALL \"\${list}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${folder}\" RENAME dependencies.spdx)"
    COMPONENT ${component})
endfunction()

find_program(ORX_DPKG dpkg-query)
if(ORX_DPKG AND NOT WIN32)
  orx_package_papers(runtime ${library_package}
    $<TARGET_FILE:orxFunctions> $<TARGET_FILE:ZULLib> $<TARGET_FILE:TQVisionDriver> $<TARGET_FILE:LumoCfg>
    $<TARGET_FILE:orxPictureCodecs> $<TARGET_FILE:orxPictureWindows>)
  orx_package_papers(development liborxfunctions-dev "${OpenCV_DIR}/OpenCVConfig.cmake")
  set(tool_files "")
  foreach(tool IN LISTS tools)
    list(APPEND tool_files $<TARGET_FILE:${tool}>)
  endforeach()
  if(tools)
    find_file(ORX_CLI11_HEADER CLI/CLI.hpp REQUIRED) # its code is in each program
    orx_package_papers(tools orxfunctions-tools ${tool_files} "${ORX_CLI11_HEADER}")
  endif()
  if(ORX_BUILD_PYTHON)
    find_file(ORX_PYBIND11_HEADER pybind11/pybind11.h REQUIRED)
    execute_process(COMMAND "${PYTHON_EXECUTABLE}" -c "import numpy, os; print(numpy.__file__, os.__file__, sep=';', end='')"
      OUTPUT_VARIABLE python_files COMMAND_ERROR_IS_FATAL ANY)
    orx_package_papers(python python3-orxfunctions
      $<TARGET_FILE:_core> "${ORX_PYBIND11_HEADER}" ${python_files})
  endif()
endif()

include(CPack)
