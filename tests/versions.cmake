# The version stands in project() of CMakeLists.txt; fails where another file says another one.
#   cmake -DVERSION=0.9.0 -DSOURCES=... -P versions.cmake
set(wrong "")

# check(FILE FOUND EXPECTED)
function(check file found expected)
  if(NOT found STREQUAL expected)
    list(APPEND wrong "${file} says '${found}' instead of ${expected}")
    set(wrong "${wrong}" PARENT_SCOPE)
  endif()
endfunction()

foreach(package IN ITEMS npm editors/code)
  file(READ ${SOURCES}/${package}/package.json json)
  string(JSON found GET "${json}" version)
  check(${package}/package.json "${found}" ${VERSION})
  file(READ ${SOURCES}/${package}/package-lock.json json)
  string(JSON found GET "${json}" version)
  check(${package}/package-lock.json "${found}" ${VERSION})
  string(JSON found GET "${json}" packages "" version)
  check("${package}/package-lock.json, its package," "${found}" ${VERSION})
endforeach()

# The newest version of the changes, and what clients are told to ask for.
string(REGEX MATCH "^[0-9]+\\.[0-9]+" series ${VERSION})
foreach(place IN ITEMS
    "CHANGELOG.md|\n## ([0-9.]+)\n|${VERSION}"
    "README.md|\nVersion ([0-9]+\\.[0-9]+)\\.|${series}"
    "docs/install.md|find_package\\(quor_parser ([0-9.]+) |${series}"
    "examples/CMakeLists.txt|find_package\\(quor_parser ([0-9.]+) |${series}")
  string(REPLACE "|" ";" place "${place}")
  list(GET place 0 name)
  list(GET place 1 pattern)
  list(GET place 2 expected)
  file(READ ${SOURCES}/${name} text)
  set(CMAKE_MATCH_1 "")
  string(REGEX MATCH "${pattern}" line "${text}")
  check(${name} "${CMAKE_MATCH_1}" ${expected})
endforeach()

if(wrong)
  list(JOIN wrong "\n  " wrong)
  message(FATAL_ERROR "Versions differ:\n  ${wrong}")
endif()
