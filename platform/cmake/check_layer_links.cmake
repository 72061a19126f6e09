# Checks that a layer's test program is built from its own layer and those
# below it only. Run by ctest (platform.layers.*) with
#   PROGRAM    the test program,
#   LINKED     its link libraries, comma-separated, as the build has them,
#   FORBIDDEN  the layers above it and the shared platform, comma-separated.
# The program must name none of FORBIDDEN among its link libraries and must
# not load the shared platform library at run time (which would bring every
# layer with it).
cmake_minimum_required(VERSION 3.25)
string(REPLACE "," ";" linked "${LINKED}")
string(REPLACE "," ";" forbidden "${FORBIDDEN}")
foreach(library IN LISTS forbidden)
  if(library IN_LIST linked)
    message(FATAL_ERROR "${PROGRAM} links ${library}; it links: ${LINKED}")
  endif()
endforeach()
find_program(READELF readelf REQUIRED)
execute_process(COMMAND ${READELF} -d ${PROGRAM} OUTPUT_VARIABLE dynamic RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "readelf could not read ${PROGRAM}")
endif()
if(dynamic MATCHES "libodplatform")
  message(FATAL_ERROR "${PROGRAM} needs the shared platform library")
endif()
message(STATUS "${PROGRAM}: ${LINKED}")
