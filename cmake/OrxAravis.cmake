# Aravis, which reaches real cameras, is optional.

# orx_find_aravis(<reason>): makes the target PkgConfig::ARAVIS; <reason> is empty then, else why there is none.
function(orx_find_aravis reason)
  set(needed 0.8.26) # from this version on a buffer tells its parts
  set(${reason} "" PARENT_SCOPE)
  find_package(PkgConfig QUIET)
  if(CMAKE_CROSSCOMPILING) # pkg-config would find that of this system
    set(${reason} "this is a build for another system" PARENT_SCOPE)
    return()
  elseif(NOT PKG_CONFIG_FOUND)
    set(${reason} "pkg-config was not found (Debian: pkg-config)" PARENT_SCOPE)
    return()
  endif()
  execute_process(COMMAND ${PKG_CONFIG_EXECUTABLE} --modversion aravis-0.8
    RESULT_VARIABLE status OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT status EQUAL 0)
    set(${reason} "Aravis 0.8 was not found (Debian: libaravis-dev)" PARENT_SCOPE)
    return()
  elseif(version VERSION_LESS needed)
    set(${reason} "Aravis ${version} is older than ${needed}" PARENT_SCOPE)
    return()
  endif()
  orx_missing_for_aravis(missing)
  if(NOT missing STREQUAL "")
    set(${reason} "Aravis can't be linked without ${missing}" PARENT_SCOPE)
    return()
  endif()
  pkg_check_modules(ARAVIS REQUIRED QUIET IMPORTED_TARGET aravis-0.8)
endfunction()

# orx_missing_for_aravis(<missing>): which module Aravis' file for pkg-config asks for in vain, and the package that has
# it; empty when there is none. Debian's package of Aravis does not bring them all.
function(orx_missing_for_aravis missing)
  set(${missing} "" PARENT_SCOPE)
  execute_process(COMMAND ${PKG_CONFIG_EXECUTABLE} --print-errors --cflags --libs aravis-0.8
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE errors)
  if(status EQUAL 0)
    return()
  endif()
  if(NOT errors MATCHES "Package '([^']+)', required by")
    set(${missing} "what pkg-config --libs aravis-0.8 complains of" PARENT_SCOPE)
  elseif(CMAKE_MATCH_1 STREQUAL "libusb-1.0")
    set(${missing} "libusb-1.0 (Debian: libusb-1.0-0-dev)" PARENT_SCOPE)
  else()
    set(${missing} "${CMAKE_MATCH_1} (Debian: what libaravis-dev depends on)" PARENT_SCOPE)
  endif()
endfunction()
