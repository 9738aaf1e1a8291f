# Makes one static library of several, without what only debuggers read.
#   cmake -DAR=... -DSTRIP=... -DOUT=... -DARCHIVES=one.a,other.a -P merge_archives.cmake
string(REPLACE "," ";" archives "${ARCHIVES}")
get_filename_component(folder ${OUT} DIRECTORY)
file(MAKE_DIRECTORY ${folder})
file(REMOVE ${OUT})
set(orders "create ${OUT}\n")
foreach(archive IN LISTS archives)
  string(APPEND orders "addlib ${archive}\n")
endforeach()
string(APPEND orders "save\nend\n")
file(WRITE ${OUT}.orders ${orders})
execute_process(COMMAND ${AR} -M INPUT_FILE ${OUT}.orders COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${STRIP} --strip-debug --remove-section=.comment --remove-section=.note ${OUT}
  COMMAND_ERROR_IS_FATAL ANY)
