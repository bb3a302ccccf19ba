# How the folders of a library name their files.
include(CheckCXXCompilerFlag)

# orx_sources(<target> FILE...): private sources, relative to the calling folder.
function(orx_sources target)
  foreach(file IN LISTS ARGN)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
  endforeach()
endfunction()

# orx_define(<definition> FILE...): a definition that holds a path, for the sources alone that name it: the others are
# compiled alike in every checkout, and ccache needs to compile them but once.
function(orx_define definition)
  set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_DEFINITIONS "${definition}")
endfunction()

# orx_public_headers(FILE...): headers that hosts include; they are installed
# under their path in this tree and compiled one by one by scripts/check-headers.
function(orx_public_headers)
  foreach(file IN LISTS ARGN)
    file(RELATIVE_PATH path "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    set_property(GLOBAL APPEND PROPERTY ORX_PUBLIC_HEADERS "${path}")
  endforeach()
endfunction()

# orx_toolkit_headers(FILE...): headers that are installed, too, but need a toolkit that not every host has: its programs
# compile them.
function(orx_toolkit_headers)
  foreach(file IN LISTS ARGN)
    file(RELATIVE_PATH path "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    set_property(GLOBAL APPEND PROPERTY ORX_TOOLKIT_HEADERS "${path}")
  endforeach()
endfunction()

# orx_avx2_flags(<variable>): what compiles a source for AVX2 and FMA3; empty where the processor or the tools lack it.
function(orx_avx2_flags variable)
  set(${variable} "" PARENT_SCOPE)
  if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64")
    return()
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "MSVC")
    # Without the macro __FMA__: kernels that ask for it take their other way, to the same result.
    set(flags /arch:AVX2)
  else()
    set(flags -mavx2 -mfma)
  endif()
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # This compiler moves 32-byte registers to and from the stack as if it lay on a multiple of 32, which Windows does
    # not promise (GCC's bug 54412). An assembler that writes every such move as an unaligned one makes it safe, at no
    # cost where the address happens to be aligned; without one there are no such kernels.
    check_cxx_compiler_flag(-Wa,-muse-unaligned-vector-move ORX_ASSEMBLER_UNALIGNS)
    if(NOT ORX_ASSEMBLER_UNALIGNS)
      return()
    endif()
    list(APPEND flags -Wa,-muse-unaligned-vector-move)
  endif()
  set(${variable} "${flags}" PARENT_SCOPE)
endfunction()

# orx_kernels(<target> FAMILY...): families of kernels (platform/simd/choose_kernels.h), each the path of its files
# without an ending. FAMILY.cpp is compiled for the baseline, FAMILY_avx2.cpp for AVX2 and called only after a run-time
# check: an inline function compiled there must never be shared with the rest, so such a file includes nothing but its
# family's headers and those of vectors in platform/simd. Where there are no flags for AVX2 it is compiled for the
# baseline, too, and its table holds the same functions as the other.
function(orx_kernels target)
  orx_avx2_flags(avx2)
  foreach(family IN LISTS ARGN)
    orx_sources(${target} ${family}.cpp ${family}_avx2.cpp)
    set_property(SOURCE "${CMAKE_CURRENT_SOURCE_DIR}/${family}_avx2.cpp"
      TARGET_DIRECTORY ${target}
      APPEND PROPERTY COMPILE_OPTIONS ${avx2})
  endforeach()
endfunction()

# orx_name_library(<target>): on Windows, where the file's name is part of the interface, NAME.dll whatever the compiler,
# with the version that the file's properties show.
function(orx_name_library target)
  if(NOT WIN32)
    return()
  endif()
  set_target_properties(${target} PROPERTIES PREFIX "")
  set(ORX_LIBRARY_FILE "${target}.dll")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${PROJECT_BINARY_DIR}/${target}.rc" @ONLY)
  target_sources(${target} PRIVATE "${PROJECT_BINARY_DIR}/${target}.rc")
endfunction()

# orx_hide_foreign_names(<target>): exports nothing that belongs to another library (see exports.map).
function(orx_hide_foreign_names target)
  if(UNIX AND NOT APPLE)
    set(map "${PROJECT_SOURCE_DIR}/cmake/exports.map")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
  endif()
endfunction()
