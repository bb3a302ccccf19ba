# Fails when a module exports anything else than the interface says. VDGetCameraType is the one procedure of LumoCfg,
# the others are those of TQVisionDriver.
file(READ "${HEADER}" header)
string(REGEX MATCHALL "VD_EXPORT [a-z]+ VD[A-Za-z]+\\(" declarations "${header}")
set(expected "")
foreach(declaration IN LISTS declarations)
  string(REGEX REPLACE "^VD_EXPORT [a-z]+ (.*)\\($" "\\1" procedure "${declaration}")
  set(owner TQVisionDriver)
  if(procedure STREQUAL "VDGetCameraType")
    set(owner LumoCfg)
  endif()
  if(owner STREQUAL NAME)
    list(APPEND expected "${procedure}")
  endif()
endforeach()

execute_process(COMMAND ${NM} --dynamic --defined-only --format=posix "${MODULE}"
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
set(exported "")
foreach(symbol IN LISTS symbols)
  string(REGEX REPLACE " .*$" "" symbol "${symbol}")
  # What the toolchain adds: sanitizer tables, section marks.
  if(NOT symbol MATCHES "^(_init|_fini|__odr_asan|__asan|__tsan|__ubsan|_end|_edata|__bss_start)")
    list(APPEND exported "${symbol}")
  endif()
endforeach()

list(SORT expected)
list(SORT exported)
if(expected STREQUAL "" OR NOT exported STREQUAL expected)
  message(FATAL_ERROR "${NAME} exports\n  ${exported}\ninstead of\n  ${expected}")
endif()
message(STATUS "${NAME} exports ${exported}")
