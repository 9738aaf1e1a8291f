# Fails unless the library shows exactly the functions of its interface, the definition file of the import
# library the same, and the header for C++ reaches them all.
#   cmake -DNM=... -DOBJDUMP=... -DLIBRARY=... -DSOURCES=... -P exports.cmake
set(expected
  clear_data create_instance create_reserved_field delete_instance exec_parser_cal get_column_num
  get_current_row_index get_data_arr get_data_by_col_row get_field_id_by_param_name
  get_field_val_by_index get_invoke_functions get_parser_variable_fields get_pre_parse_res
  get_row_num get_shapes release_ptr_val set_column_data set_get_extra_data_callback
  set_get_trade_dates_callback set_get_trade_time_callback set_indicator_extra_info
  set_logger_handler set_parser_instance_uuid set_parser_notice_callback_handler set_row_data
  set_trade_callback)

if(LIBRARY MATCHES "[.]dll$")
  execute_process(COMMAND ${OBJDUMP} --private-headers ${LIBRARY}
    OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "\n.Ordinal/Name Pointer. Table\n(\t[^\n]*\n)*" table "${headers}")
  string(REGEX MATCHALL "\\[ *[0-9]+\\] [^\n]+" found "${table}")
  list(TRANSFORM found REPLACE "^.*\\] " "")
else()
  execute_process(COMMAND ${NM} --dynamic --defined-only --format=just-symbols ${LIBRARY}
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\n" ";" found "${found}")
endif()
list(SORT found)
if(NOT found STREQUAL expected)
  message(FATAL_ERROR "The library exports\n  ${found}\ninstead of\n  ${expected}")
endif()

file(STRINGS ${SOURCES}/src/interface/lib_quor_parser.def defined REGEX "^ ")
list(TRANSFORM defined STRIP)
if(NOT defined STREQUAL expected)
  message(FATAL_ERROR "lib_quor_parser.def defines\n  ${defined}\ninstead of\n  ${expected}")
endif()

file(READ ${SOURCES}/include/quor_parser.hpp wrapper)
foreach(name IN LISTS expected)
  if(NOT wrapper MATCHES "[^a-z_]${name}[^a-z_]")
    message(FATAL_ERROR "quor_parser.hpp doesn't reach ${name}")
  endif()
endforeach()
