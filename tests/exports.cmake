# Fails unless a library shows exactly the functions of its interface, the definition file of the import
# library the same, and its header, or for the parser that for C++, reaches them all.
#   cmake -DNM=... -DOBJDUMP=... -DWHICH=parser|advice -DLIBRARY=... -DSOURCES=... -P exports.cmake
set(parser_calls
  clear_data create_instance create_reserved_field delete_instance exec_parser_cal get_column_num
  get_current_row_index get_data_arr get_data_by_col_row get_field_id_by_param_name
  get_field_val_by_index get_invoke_functions get_parser_variable_fields get_pre_parse_res
  get_row_num get_shapes release_ptr_val set_column_data set_get_extra_data_callback
  set_get_trade_dates_callback set_get_trade_time_callback set_indicator_extra_info
  set_logger_handler set_parser_instance_uuid set_parser_notice_callback_handler set_row_data
  set_trade_callback)
set(advice_calls
  quor_advice_code quor_advice_cure quor_advice_format quor_advice_meaning quor_advice_release_text
  quor_advice_version quor_advise quor_findings_at quor_findings_count quor_findings_free
  quor_findings_json quor_findings_text)
set(parser_files src/interface/lib_quor_parser.def include/quor_parser.hpp)
set(advice_files advice/c_face/lib_quor_advice.def include/quor_advice.h)
set(expected ${${WHICH}_calls})
list(GET ${WHICH}_files 0 definition)
list(GET ${WHICH}_files 1 header)

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

file(STRINGS ${SOURCES}/${definition} defined REGEX "^ ")
list(TRANSFORM defined STRIP)
if(NOT defined STREQUAL expected)
  message(FATAL_ERROR "${definition} defines\n  ${defined}\ninstead of\n  ${expected}")
endif()

file(READ ${SOURCES}/${header} wrapper)
foreach(name IN LISTS expected)
  if(NOT wrapper MATCHES "[^a-z_]${name}[^a-z_]")
    message(FATAL_ERROR "${header} doesn't reach ${name}")
  endif()
endforeach()
