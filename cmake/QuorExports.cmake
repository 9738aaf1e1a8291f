# quor_export(TARGET FOLDER NAME): the library shows what FOLDER/exports.map lists, nothing else; for
# Windows FOLDER/NAME.def lists the same, for the import library of the other tool chain there, which
# QUOR_IMPORT_LIBRARIES then holds.
function(quor_export target folder name)
  if(WIN32)
    find_program(QUOR_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool REQUIRED)
    set(definition ${folder}/${name}.def)
    set(import_library ${CMAKE_CURRENT_BINARY_DIR}/${name}.lib)
    add_custom_command(OUTPUT ${import_library}
      COMMAND ${QUOR_DLLTOOL} -m i386:x86-64 -d ${definition} -l ${import_library}
      DEPENDS ${definition})
    add_custom_target(${target}_import_library ALL DEPENDS ${import_library})
    set_property(GLOBAL APPEND PROPERTY QUOR_IMPORT_LIBRARIES ${import_library})
  else()
    # Templates of the standard library are weak symbols that hidden visibility alone leaves behind.
    target_link_options(${target} PRIVATE -Wl,--version-script=${folder}/exports.map)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${folder}/exports.map)
  endif()
endfunction()
