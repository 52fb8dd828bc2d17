# Runs PROGRAM with ARGUMENTS and compares what it did with the file EXPECTED.
if(WRITES)
  file(REMOVE ${WRITES})
endif()
execute_process(COMMAND ${PROGRAM} ${ARGUMENTS}
  OUTPUT_VARIABLE actual
  ERROR_VARIABLE actual
  RESULT_VARIABLE status)
if(WRITES)
  file(READ ${WRITES} written)
  string(APPEND actual "${written}")
endif()
string(APPEND actual "[exit status ${status}]\n")

if(DEFINED ENV{KESCOREXML_UPDATE_EXPECTED})
  file(WRITE ${EXPECTED} "${actual}")
  return()
endif()
file(READ ${EXPECTED} expected)
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "${EXPECTED} says:\n${expected}\nbut this came:\n${actual}")
endif()
