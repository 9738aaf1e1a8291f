# What CPack makes of an installation: packages for Debian, one for each component, and an archive for
# any Linux, or an archive for Windows.
string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
set(CPACK_PACKAGE_NAME quor-parser)
set(CPACK_PACKAGE_VENDOR "quor")
set(CPACK_PACKAGE_CONTACT "The quor maintainers <maintainers@quor.invalid>")
set(CPACK_PACKAGE_FILE_NAME
  ${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-${system}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_COMPONENTS_ALL library development)
if(TARGET quor)
  list(APPEND CPACK_COMPONENTS_ALL quor)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(debian_files ${PROJECT_SOURCE_DIR}/cmake/debian)
# The manual, the copyright file and the changelog in the form that Debian wants them in.
set(CPACK_PRE_BUILD_SCRIPTS ${debian_files}/documents.cmake)

# about_package(COMPONENT PACKAGE SECTION TEXT): the synopsis is that of the project.
macro(about_package component package section text)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${text}")
endmacro()

set(about "From bars of a security, scripts of a technical-indicator language calculate
lines, drawings, notices and trade signals. A client drives the library
through 27 C functions.
.
This package has")
about_package(library libquor-parser libs "${about} the shared library, and beside it one that
tells the authors of scripts what is wrong with them.")
about_package(development libquor-parser-dev libdevel "${about} the headers for C and C++, the
documentation, and clients to start from in C, C++, C# and Python.")
about_package(quor quor utils "The program checks scripts of a technical-indicator language, prints their
lines over bars from a file of comma-separated values, draws them as a chart,
and serves a page to write them in.")

# What the tests hold the library and the program to. CPack, if asked to find it out by itself, would
# also let scripts bring the loader's cache up to date, which is a trigger's task.
set(runtime "libc6 (>= 2.28), libgcc-s1 (>= 4.2)")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS ${runtime})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${debian_files}/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libquor-parser (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_QUOR_PACKAGE_DEPENDS "libquor-parser (>= ${PROJECT_VERSION})")
if(CMAKE_CROSSCOMPILING)
  # Without what draws a PNG it needs no more; packages of the other system can't be asked here.
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
  string(APPEND CPACK_DEBIAN_QUOR_PACKAGE_DEPENDS ", ${runtime}")
else()
  set(CPACK_DEBIAN_QUOR_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
endif()

include(CPack)
