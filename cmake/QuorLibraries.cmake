# The libraries that are linked in, so that what is built needs them nowhere: simdjson::simdjson and
# csv::csv. One script builds them for every system, when they are missing or when it has changed.
set(QUOR_LIBRARIES "" CACHE PATH
  "Prefix of simdjson and libcsv; if empty, tools/libraries.sh builds them from Debian's sources")

set(libraries ${QUOR_LIBRARIES})
if(NOT libraries)
  string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
  set(libraries ${PROJECT_SOURCE_DIR}/build/libraries/${system})
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/libraries.sh ${system}
    COMMAND_ERROR_IS_FATAL ANY)
endif()

set(simdjson_DIR simdjson_DIR-NOTFOUND)
find_package(simdjson REQUIRED NO_DEFAULT_PATH PATHS ${libraries} NO_CMAKE_FIND_ROOT_PATH)

# The CSV library comes without a CMake package.
find_path(csv_include csv.h PATHS ${libraries}/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
find_library(csv_library csv PATHS ${libraries}/lib NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
add_library(csv::csv UNKNOWN IMPORTED)
set_target_properties(csv::csv PROPERTIES
  IMPORTED_LOCATION ${csv_library} INTERFACE_INCLUDE_DIRECTORIES ${csv_include})
