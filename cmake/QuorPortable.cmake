# quor_make_portable(TARGET SOURCES FILE... CALLS NAME...)
# Lets what is shipped for Linux run on other systems than the one it is built on: the runtime of C++
# is linked in, and the SOURCES bind the CALLS to symbols of glibc 2.28 or older.
function(quor_make_portable target)
  cmake_parse_arguments(PARSE_ARGV 1 old "" "" "SOURCES;CALLS")
  # A sanitizer brings a runtime of its own.
  if(NOT CMAKE_SYSTEM_NAME STREQUAL Linux OR NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU OR QUOR_SANITIZE)
    return()
  endif()
  target_link_options(${target} PRIVATE -static-libstdc++ -Wl,--gc-sections)
  # The versions of others aren't known here.
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|aarch64)$")
    target_sources(${target} PRIVATE ${old_SOURCES})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake)
    list(TRANSFORM old_CALLS PREPEND -Wl,--wrap=)
    target_link_options(${target} PRIVATE ${old_CALLS})
    # Where older systems have the calls of threads. It would be left out, as none is found there here.
    target_link_libraries(${target} PRIVATE
      -Wl,--push-state,--no-as-needed -l:libpthread.so.0 -Wl,--pop-state)
  endif()
endfunction()
