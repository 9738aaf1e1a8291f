# What `cmake --install` lays out, in three components: the library, what developers of clients need,
# and the program `quor`. Everything may be moved to another prefix later.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quor_parser)
set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/quor-parser)

install(TARGETS quor_parser quor_advice_shared EXPORT quor_parser
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES include/quor_parser.h include/quor_parser.hpp include/quor_advice.h
  include/quor_advice.hpp include/quor_values.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
get_property(import_libraries GLOBAL PROPERTY QUOR_IMPORT_LIBRARIES)
if(import_libraries)
  install(FILES ${import_libraries}
    DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()
if(TARGET quor)
  install(TARGETS quor DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT quor)
endif()
if(TARGET quor-chart)
  install(TARGETS quor-chart DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/quor COMPONENT quor)
endif()

# find_package(quor_parser) for CMake. The library has no dependency of its own to look for.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/quor_parser-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quor_parser-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)
install(EXPORT quor_parser NAMESPACE quor:: FILE quor_parser-targets.cmake
  DESTINATION ${package_dir} COMPONENT development)
install(FILES cmake/quor_parser-config.cmake DESTINATION ${package_dir} COMPONENT development)
include(QuorEngine)

# quor_parser.pc and quor_advice.pc for everything else, with paths that start from where the file lies.
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
file(RELATIVE_PATH pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(name IN ITEMS parser advice)
  configure_file(cmake/quor_${name}.pc.in quor_${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quor_${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# The texts keep their places relative to each other, so that their links hold.
install(FILES CHANGELOG.md LICENCE DESTINATION ${doc_dir} COMPONENT development)
install(DIRECTORY docs examples samples DESTINATION ${doc_dir} COMPONENT development
  PATTERN examples/build EXCLUDE
  PATTERN examples/session EXCLUDE
  PATTERN examples/live EXCLUDE
  PATTERN __pycache__ EXCLUDE
  PATTERN *.exe EXCLUDE)
