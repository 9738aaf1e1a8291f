# Fails if a Windows file needs a DLL that is neither the system's nor the library itself.
#   cmake -DOBJDUMP=... -DFILE=... -P imports.cmake
cmake_policy(VERSION 3.25)
set(allowed kernel32.dll msvcrt.dll advapi32.dll shell32.dll lib_quor_parser.dll)

execute_process(COMMAND ${OBJDUMP} --private-headers ${FILE}
  OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" needed "${headers}")
list(TRANSFORM needed REPLACE "DLL Name: " "")
list(TRANSFORM needed TOLOWER)
if(NOT "kernel32.dll" IN_LIST needed)
  message(FATAL_ERROR "No import table was found in ${FILE}")
endif()
list(REMOVE_ITEM needed ${allowed})
if(needed)
  message(FATAL_ERROR "${FILE} needs ${needed}")
endif()
