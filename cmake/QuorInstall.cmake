# What `cmake --install` lays out. Everything may be moved to another prefix later.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quor_parser)
set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/quor-parser)

install(TARGETS quor_parser EXPORT quor_parser
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/quor_parser.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET quor)
  install(TARGETS quor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# find_package(quor_parser) for CMake. The library has no dependency of its own to look for.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/quor_parser-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quor_parser-config-version.cmake
  DESTINATION ${package_dir})
install(EXPORT quor_parser NAMESPACE quor:: FILE quor_parser-config.cmake
  DESTINATION ${package_dir})

# quor_parser.pc for everything else, with paths that start from where the file lies.
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
file(RELATIVE_PATH pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/quor_parser.pc.in quor_parser.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quor_parser.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The texts keep their places relative to each other, so that their links hold.
install(FILES CHANGELOG.md DESTINATION ${doc_dir})
install(DIRECTORY docs examples samples DESTINATION ${doc_dir}
  PATTERN examples/build EXCLUDE
  PATTERN examples/session EXCLUDE)
