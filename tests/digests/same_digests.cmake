# Fails unless a command prints the lines of a file, and says which ones differ.
#   cmake -DCOMMAND=PROGRAM;ARGUMENTS -DEXPECTED=FILE -P same_digests.cmake
cmake_policy(VERSION 3.25)
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
file(READ ${EXPECTED} expected)
foreach(text IN ITEMS printed expected)
  string(REGEX REPLACE "[][;]" "_" ${text} "${${text}}")
  string(REGEX REPLACE "\r?\n" ";" ${text} "${${text}}")
endforeach()
set(others ${printed})
list(REMOVE_ITEM others ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${printed})
if(others OR missing)
  list(JOIN others "\n  " others)
  list(JOIN missing "\n  " missing)
  message(FATAL_ERROR "This system gives other values than the one that wrote ${EXPECTED}:\n  ${others}\n"
    "instead of\n  ${missing}")
endif()
