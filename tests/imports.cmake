# Fails if a file needs more of the system that it runs on than what every such system has, or takes
# mathematics from it that differ from system to system, unless it may.
#   cmake -DOBJDUMP=... -DFILE=... [-DSONAME=...] [-DSYSTEM_MATHEMATICS=ON] -P imports.cmake
cmake_policy(VERSION 3.25)
execute_process(COMMAND ${OBJDUMP} --private-headers ${FILE}
  OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)

if(FILE MATCHES "[.](dll|exe)$")
  set(pattern "DLL Name: ([^\n]+)")
  set(always kernel32.dll)
  set(allowed kernel32.dll msvcrt.dll advapi32.dll shell32.dll ws2_32.dll lib_quor_parser.dll)
else()
  set(pattern "NEEDED +([^\n]+)")
  set(always libc.so.6)
  set(allowed libc.so.6 libm.so.6 libpthread.so.0 libgcc_s.so.1
    ld-linux-x86-64.so.2 ld-linux-aarch64.so.1 lib_quor_parser.so)
endif()
string(REGEX MATCHALL "${pattern}" needed "${headers}")
list(TRANSFORM needed REPLACE "${pattern}" "\\1")
list(TRANSFORM needed TOLOWER)
if(NOT always IN_LIST needed)
  message(FATAL_ERROR "No table of what ${FILE} needs was found")
endif()
list(REMOVE_ITEM needed ${allowed})
if(needed)
  message(FATAL_ERROR "${FILE} needs ${needed}")
endif()

# Symbols of glibc from this version on would keep the file from older systems. Those that the
# compiler brings in are bound to older ones by old_glibc.c and old_glibc_program.c.
string(REGEX MATCHALL "GLIBC_[0-9.]+" versions "${headers}")
foreach(version IN LISTS versions)
  string(REPLACE GLIBC_ "" number ${version})
  if(number VERSION_GREATER 2.28)
    execute_process(COMMAND ${OBJDUMP} --dynamic-syms ${FILE} OUTPUT_VARIABLE symbols)
    string(REGEX MATCHALL "\\(${version}\\) [^\n]+" symbols "${symbols}")
    message(FATAL_ERROR "${FILE} needs ${symbols}")
  endif()
endforeach()

# The headers of a file for Windows have the table of what it takes.
set(names "${headers}")
if(NOT FILE MATCHES "[.](dll|exe)$")
  execute_process(COMMAND ${OBJDUMP} --dynamic-syms ${FILE}
    OUTPUT_VARIABLE names COMMAND_ERROR_IS_FATAL ANY)
endif()
if(NOT names MATCHES " memcpy\n")
  message(FATAL_ERROR "No table of what ${FILE} calls was found")
endif()
set(mathematics "_*(acos|asin|atan|cos|exp|log|log10|pow|sin|tan)(_finite)?")
if(NOT SYSTEM_MATHEMATICS AND names MATCHES "[ .](${mathematics})\n")
  message(FATAL_ERROR "${FILE} takes ${CMAKE_MATCH_1} from the system")
endif()

if(SONAME AND NOT headers MATCHES "SONAME +${SONAME}\n")
  message(FATAL_ERROR "${FILE} has another soname than ${SONAME}")
endif()
