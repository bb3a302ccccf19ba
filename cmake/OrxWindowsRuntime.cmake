# Windows finds the libraries of a program beside it: sets ORX_WINDOWS_RUNTIME, the libraries of others that ours need,
# and copies them beside the programs of the build tree.

set(ORX_WINDOWS_RUNTIME "")

foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT IS_ABSOLUTE "${file}")
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER} does not know where its ${name} is")
  endif()
  list(APPEND ORX_WINDOWS_RUNTIME "${file}")
endforeach()

find_file(ORX_ZLIB_DLL zlib1.dll PATHS / PATH_SUFFIXES bin lib REQUIRED)
list(APPEND ORX_WINDOWS_RUNTIME "${ORX_ZLIB_DLL}")

# The last two are what calib3d stands on.
foreach(library IN LISTS OpenCV_LIBS ITEMS opencv_features2d opencv_flann)
  foreach(configuration RELEASE NONE DEBUG)
    get_target_property(file ${library} IMPORTED_LOCATION_${configuration})
    if(file)
      list(APPEND ORX_WINDOWS_RUNTIME "${file}")
      break()
    endif()
  endforeach()
endforeach()

file(COPY ${ORX_WINDOWS_RUNTIME} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
