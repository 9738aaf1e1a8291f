# The libraries that are linked in, so that what is built needs them nowhere: simdjson::simdjson,
# decimals::decimals, mathematics::mathematics and http::http. One script builds them for every
# system, when they are missing or when it has changed.
set(QUOR_LIBRARIES "" CACHE PATH
  "Prefix of all of them; if empty, tools/libraries.sh builds them from Debian's sources")

set(libraries ${QUOR_LIBRARIES})
if(NOT libraries)
  string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
  if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL aarch64)
    set(system arm64)
  endif()
  set(libraries ${PROJECT_SOURCE_DIR}/build/libraries/${system})
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/libraries.sh ${system}
    COMMAND_ERROR_IS_FATAL ANY)
endif()

# Forget another one that an earlier configuration has found.
unset(simdjson_DIR CACHE)
find_package(simdjson REQUIRED PATHS ${libraries} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)

# Its header lays out a parser otherwise where a compiler is told of threads, as Cairo has it told.
set_property(TARGET simdjson::simdjson APPEND PROPERTY
  INTERFACE_COMPILE_DEFINITIONS SIMDJSON_THREADS_ENABLED=1)

# The others come without a CMake package. src/platform/math.h declares the mathematics.
set(there PATHS ${libraries} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
find_library(mathematics_library quor_mathematics PATH_SUFFIXES lib ${there})
add_library(mathematics::mathematics UNKNOWN IMPORTED)
set_target_properties(mathematics::mathematics PROPERTIES IMPORTED_LOCATION ${mathematics_library})

# Decimals are read by the same code everywhere, for not every library of C++ reads them.
find_path(decimals_include fast_float/fast_float.h PATH_SUFFIXES include ${there})
add_library(decimals::decimals INTERFACE IMPORTED)
set_target_properties(decimals::decimals PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${decimals_include})

# What the language server, the studio and the module of the page write JSON by.
if(WASI OR (QUOR_BUILD_HOST AND (QUOR_BUILD_LSP OR QUOR_BUILD_STUDIO)))
  find_package(nlohmann_json 3.11 REQUIRED)
endif()

# A header of which only the studio has use, and its page.
if(QUOR_BUILD_HOST AND QUOR_BUILD_STUDIO)
  find_path(http_include httplib.h PATH_SUFFIXES include ${there})
  add_library(http::http INTERFACE IMPORTED)
  set_target_properties(http::http PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${http_include})
  if(WIN32)
    target_link_libraries(http::http INTERFACE ws2_32)
  endif()
endif()
