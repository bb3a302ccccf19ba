# Settings shared by every target of this project.
#
# Numbers are computed as written: no contraction into fused operations, no
# value-changing "fast" mathematics, and no instructions beyond the baseline
# except in the kernels that are chosen at run time.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# All programs and libraries of the build tree lie together, so that a program
# finds the shared libraries beside it on every platform.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

find_program(ORX_CCACHE ccache)
if(ORX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${ORX_CCACHE}")
endif()

add_library(orx_settings INTERFACE)
if(MSVC)
  # C4251 and C4275 tell of classes that cross the interface with members and bases of the standard library, which is
  # meant: one compiler builds the library and its hosts.
  target_compile_options(orx_settings INTERFACE /utf-8 /fp:precise /W4 /wd4251 /wd4275)
  if(ORX_WARNINGS_AS_ERRORS)
    target_compile_options(orx_settings INTERFACE /WX)
  endif()
else()
  target_compile_options(orx_settings INTERFACE
    -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(orx_settings INTERFACE -Wthread-safety)
  endif()
  if(ORX_WARNINGS_AS_ERRORS)
    target_compile_options(orx_settings INTERFACE -Werror)
  endif()
endif()

# Presets asan and tsan: optimised little, since compiling takes most of their time, with line numbers for reports.
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1" CACHE STRING "Flags of the build type Sanitize")
mark_as_advanced(CMAKE_CXX_FLAGS_SANITIZE)

if(ORX_SANITIZER STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(ORX_SANITIZER STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(ORX_SANITIZER STREQUAL "fuzzer")
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "libFuzzer comes with Clang: set CMAKE_CXX_COMPILER to clang++")
  endif()
  # Counters that steer libFuzzer, and those that scripts/fuzz tells the coverage from; only the programs in tests/fuzz
  # are linked with libFuzzer itself.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
    -fno-omit-frame-pointer -fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fsanitize=fuzzer-no-link,address,undefined -fprofile-instr-generate)
elseif(NOT ORX_SANITIZER STREQUAL "")
  message(FATAL_ERROR "ORX_SANITIZER must be empty, address, thread or fuzzer, not '${ORX_SANITIZER}'")
endif()
