/* A client that the other tool chain of Windows builds: it links by the import library made for
 * that one, without any runtime of C. Its exit status is 0 if all went well. */
#include "quor_parser.h"

/* What that tool chain wants of a program that uses floating point. */
int _fltused = 0;

int start(void);

static int is_success(char* text) {
  const char expected[] = "{\"ErrCode\":0,";
  int i = 0;
  while (text != 0 && expected[i] != 0 && text[i] == expected[i]) ++i;
  release_ptr_val(text);
  return expected[i] == 0;
}

int start(void) {
  static const char script[] = "TWICE:=C*2;";
  static const char bar[] = "[{\"1\":20240102000000,\"11\":2.5}]";
  const int64_t handle = create_instance();
  uint32_t length = 0;
  release_ptr_val(get_pre_parse_res(handle, script, "", "", sizeof script - 1, 0, 0, &length));
  set_row_data(handle, bar, sizeof bar - 1);
  if (length == 0 || !is_success(exec_parser_cal(handle, 0, 0, &length))) return 1;
  const int32_t column = get_field_id_by_param_name(handle, "TWICE", 5);
  const double value = get_data_by_col_row(handle, 0, (uint32_t)column);
  delete_instance(handle);
  return value == 5.0 ? 0 : 2;
}
