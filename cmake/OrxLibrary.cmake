# How the folders of a library name their files.
include(CheckCXXCompilerFlag)

# orx_sources(<target> FILE...): private sources, relative to the calling folder.
function(orx_sources target)
  foreach(file IN LISTS ARGN)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
  endforeach()
endfunction()

# orx_public_headers(FILE...): headers that hosts include; they are installed
# under their path in this tree and compiled one by one by scripts/check-headers.
function(orx_public_headers)
  foreach(file IN LISTS ARGN)
    file(RELATIVE_PATH path "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    set_property(GLOBAL APPEND PROPERTY ORX_PUBLIC_HEADERS "${path}")
  endforeach()
endfunction()

# orx_avx2_sources(<target> FILE...): kernels compiled for AVX2 and called only
# after a run-time check. Such a file includes nothing but *_internal.h kernel
# headers: an inline function compiled here must never be shared with the rest.
function(orx_avx2_sources target)
  if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64")
    return()
  endif()
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # This compiler moves 32-byte registers to and from the stack as if it lay on a multiple of 32, which Windows does
    # not promise (GCC's bug 54412). An assembler that writes every such move as an unaligned one makes it safe, at no
    # cost where the address happens to be aligned; without one there are no such kernels.
    check_cxx_compiler_flag(-Wa,-muse-unaligned-vector-move ORX_ASSEMBLER_UNALIGNS)
    if(NOT ORX_ASSEMBLER_UNALIGNS)
      return()
    endif()
    set(unaligned -Wa,-muse-unaligned-vector-move)
  endif()
  orx_sources(${target} ${ARGN})
  target_compile_definitions(${target} PRIVATE ORX_HAS_AVX2_KERNELS)
  foreach(file IN LISTS ARGN)
    set_property(SOURCE "${CMAKE_CURRENT_SOURCE_DIR}/${file}"
      TARGET_DIRECTORY ${target}
      APPEND PROPERTY COMPILE_OPTIONS $<IF:$<CXX_COMPILER_ID:MSVC>,/arch:AVX2,-mavx2> ${unaligned})
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
