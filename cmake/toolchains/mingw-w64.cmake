# 64-bit Windows, built by mingw-w64's GCC with its POSIX threads (std::thread and std::mutex need them).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows 10 is the oldest system that is used.
add_compile_definitions(WINVER=0x0A00 _WIN32_WINNT=0x0A00)

# Programs come from this machine; everything else from the compiler's own folder, from CMAKE_PREFIX_PATH, and from the
# libraries that scripts/build-windows-dependencies made (linked to from the build folder, see there).
if(NOT DEFINED ORX_WINDOWS_DEPENDENCIES)
  set(ORX_WINDOWS_DEPENDENCIES "${CMAKE_CURRENT_LIST_DIR}/../../build/windows-dependencies")
endif()
get_filename_component(ORX_WINDOWS_DEPENDENCIES "${ORX_WINDOWS_DEPENDENCIES}" ABSOLUTE)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORX_WINDOWS_DEPENDENCIES CMAKE_PREFIX_PATH)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${CMAKE_PREFIX_PATH} "${ORX_WINDOWS_DEPENDENCIES}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${ORX_WINDOWS_DEPENDENCIES}/lib/pkgconfig") # none of this machine's packages

# Tests run here under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/run-in-wine")
