# The engine for C++ as one static library that holds all that it links, with its headers and a CMake
# component of the package: find_package(quor_parser COMPONENTS engine). Its form isn't fixed.
option(QUOR_INSTALL_ENGINE "Install the engine for C++, too" ON)
if(NOT QUOR_INSTALL_ENGINE)
  return()
endif()

set(engine_archive ${CMAKE_CURRENT_BINARY_DIR}/engine/${CMAKE_STATIC_LIBRARY_PREFIX}quor_engine.a)
add_custom_command(OUTPUT ${engine_archive}
  COMMAND ${CMAKE_COMMAND} -DAR=${CMAKE_AR} -DSTRIP=${CMAKE_STRIP} -DOUT=${engine_archive}
    "-DARCHIVES=$<TARGET_FILE:quor_engine>,$<TARGET_FILE:simdjson::simdjson>,$<TARGET_FILE:mathematics::mathematics>"
    -P ${CMAKE_CURRENT_LIST_DIR}/merge_archives.cmake
  DEPENDS quor_engine ${CMAKE_CURRENT_LIST_DIR}/merge_archives.cmake
  VERBATIM)
add_custom_target(quor_engine_archive ALL DEPENDS ${engine_archive})

set(engine_include ${CMAKE_INSTALL_INCLUDEDIR}/quor_engine)
install(FILES ${engine_archive} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES src/engine/engine.h src/engine/values.h DESTINATION ${engine_include}/engine
  COMPONENT development)
configure_package_config_file(cmake/quor_parser-engine.cmake.in quor_parser-engine.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS engine_include CMAKE_INSTALL_LIBDIR)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quor_parser-engine.cmake
  DESTINATION ${package_dir} COMPONENT development)
