# Fails unless a command succeeds and prints the text of a file; line ends may be those of any system.
#   cmake -DCOMMAND=PROGRAM;ARGUMENTS -DEXPECTED=FILE [-DINPUT=FILE] -P same_output.cmake
set(input "")
if(INPUT)
  set(input INPUT_FILE ${INPUT})
endif()
execute_process(COMMAND ${COMMAND} ${input} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\r\n" "\n" printed "${printed}")
file(READ ${EXPECTED} expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "Printed\n${printed}\ninstead of\n${expected}")
endif()
