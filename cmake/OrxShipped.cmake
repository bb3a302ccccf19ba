# What holds for the libraries, modules and programs that leave this tree, and not for its tests.

option(ORX_HARDENING "Harden what is built for release: stack protector, checked copies, read-only tables" ON)
option(ORX_COVERAGE "Count which lines and branches of the libraries and modules run (gcov)" OFF)

set(ORX_HARDENED OFF)
if(ORX_HARDENING AND ORX_SANITIZER STREQUAL "" AND NOT ORX_COVERAGE AND NOT MSVC AND NOT APPLE)
  set(ORX_HARDENED ON)
endif()

# Sources are known by their names in this tree, wherever it lies (ccache names them relative to the build folder). So
# builds in different folders give the same bytes.
file(RELATIVE_PATH from_build "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}")
string(REGEX REPLACE "/$" "" from_build "${from_build}")
set(ORX_SOURCE_NAMES "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${from_build}=.")

# orx_harden(): for the calling folder and those below it, when built for release. Control-flow protection
# (-fcf-protection) is left out: a program has it only when all that it is linked from has, and the start files of Debian
# 12 have not. On Windows there is what its linker offers: checked copies and stack protectors would bring a library of
# their own there.
macro(orx_harden)
  if(ORX_HARDENED)
    set(release $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    add_compile_options("$<${release}:${ORX_SOURCE_NAMES}>")
    if(WIN32)
      add_link_options("$<${release}:LINKER:--dynamicbase,--nxcompat,--high-entropy-va>")
    else()
      add_compile_options("$<${release}:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
      add_link_options("$<${release}:LINKER:-z,relro,-z,now>"
        "$<$<AND:${release},$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>>:-pie>")
    endif()
  endif()
endmacro()

# orx_count_coverage(): for the calling folder and those below it. Without inlining, so that what runs is counted where it
# is written; and whole counts from all threads.
macro(orx_count_coverage)
  if(ORX_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic -O1 -fno-inline)
  endif()
endmacro()
if(ORX_COVERAGE)
  add_link_options(--coverage) # of everything, since tests hold parts of the modules
endif()
