# The language level, the warnings and the arithmetic that every target of the project shares.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(WIN32)
  # Programs find the library only beside themselves.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()

# What may come into a shared library.
set(QUOR_POSITION_INDEPENDENT ON)
if(WASI)
  set(QUOR_POSITION_INDEPENDENT OFF)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  # Without the permission it keeps nothing that is built with precompiled headers.
  set(CMAKE_C_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_C_COMPILER_LAUNCHER})
endif()

# quor_precompile(TARGET [HEADER...]): the standard headers that most sources use, which cost more time
# than the sources themselves, and the given ones are read once. Sources still include what they use.
# The preset `asan` precompiles nothing, so that a missing include or a warning shows there.
option(QUOR_PRECOMPILE "Precompile headers that many sources use" ON)
function(quor_precompile target)
  if(NOT QUOR_PRECOMPILE)
    return()
  endif()
  set(headers algorithm array cmath cstdint functional map memory optional span string string_view
    unordered_map utility vector ${ARGN})
  list(TRANSFORM headers REPLACE "(.+)" "$<$<COMPILE_LANGUAGE:CXX>:<\\1$<ANGLE-R>>")
  target_precompile_headers(${target} PRIVATE ${headers})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # From precompiled headers this compiler warns of sums of texts what it is silent of otherwise.
    set(sums_of_texts -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${sums_of_texts}>")
  endif()
endfunction()

# quor_batch(TARGET [SOURCE...]): the sources are compiled several at once, but for the given ones, so that
# the headers that they share are read fewer times. Names of one file mustn't mean something else in another
# one. A whole build takes less time so, and one after a change more, hence the preset `dev` precompiles
# headers instead.
option(QUOR_BATCH "Compile small sources several at once" OFF)
function(quor_batch target)
  if(NOT QUOR_BATCH)
    quor_precompile(${target})
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  # Of a class of a header that has a member of a type that only its own file knows.
  target_compile_options(${target} PRIVATE
    "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>")
endfunction()

set(QUOR_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")

add_library(quor_options INTERFACE)
target_compile_options(quor_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # Results are laid down to the last bit, so a product and a sum never become one rounding.
  -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # At -O3 this compiler takes any "text" + std::string for a copy onto itself.
  target_compile_options(quor_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(CMAKE_SYSTEM_PROCESSOR STREQUAL aarch64 AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Notes on how a pair of numbers was handed over before version 10.
  target_compile_options(quor_options INTERFACE -Wno-psabi)
endif()
if(WASI)
  # Sizes have 32 bits there, and so has all memory: rows and bytes can't be more.
  target_compile_options(quor_options INTERFACE -Wno-shorten-64-to-32 -Wno-sign-conversion)
endif()
if(QUOR_SANITIZE)
  target_compile_options(quor_options INTERFACE
    -fsanitize=${QUOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quor_options INTERFACE -fsanitize=${QUOR_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # With its own checks between them, this compiler takes members of what is optional, and of regular
    # expressions, for uninitialised; the builds without sanitizers look for those that are.
    target_compile_options(quor_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-maybe-uninitialized>)
  else()
    # Clang takes no rows side by side with checks between them, and says so.
    target_compile_options(quor_options INTERFACE -Wno-pass-failed)
  endif()
endif()
