# Run by CPack over what is laid out for each package.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
  set(documents ${share}/doc/${package})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/../../LICENCE ${documents}/copyright COPYONLY)
  file(WRITE ${documents}/changelog "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * What is new stands in /usr/share/doc/quor-parser/CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${package}.overrides)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.overrides
      ${share}/lintian/overrides/${package} COPYONLY)
  endif()
  file(GLOB pages ${share}/man/man*/*.[1-8])
  execute_process(COMMAND gzip -9 -n ${documents}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
