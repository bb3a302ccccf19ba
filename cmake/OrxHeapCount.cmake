# ORX_HEAP_IS_COUNTED: whether benchmarks can put their own functions before the heap's: glibc, and no sanitizer, which
# does so itself.
include(CheckSymbolExists)
check_symbol_exists(__GLIBC__ features.h ORX_HAS_GLIBC)
if(ORX_HAS_GLIBC AND ORX_SANITIZER STREQUAL "")
  set(ORX_HEAP_IS_COUNTED TRUE)
else()
  set(ORX_HEAP_IS_COUNTED FALSE)
endif()
