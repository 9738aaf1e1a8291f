/* A host in C: plays a whole session against the shared library. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "quor_parser.h"

static int failures = 0;

static void check(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "failed: %s\n", what);
  ++failures;
}

static uint32_t length_of(const char* text) { return (uint32_t)strlen(text); }

/* Compares a text of the library and gives it back. */
static void check_text(char* text, uint32_t length, const char* expected, const char* what) {
  check(text != NULL && length == length_of(expected) && strcmp(text, expected) == 0, what);
  release_ptr_val(text);
}

static const char* const success = "{\"ErrCode\":0,\"ExtraMsg\":\"\",\"ErrLine\":\"\"}";

static double answer_extra(const char* key, const char* market, const char* security) {
  const int is_known = strcmp(market, "USHA") == 0 && strcmp(security, "600000") == 0;
  return strcmp(key, "MINPRICE") == 0 && is_known ? 0.01 : NAN;
}

static int is_null(double value) { return value != value; }

static void compile(int64_t handle) {
  const char* script = "GAP:=HIGH-N*LOW;TOTAL:=GAP+CLOSE;";
  const char* parameters = "[{\"PARAM_NAME\":\"N\",\"DEFAULT\":2}]";
  uint32_t length = 0;
  char* report = get_pre_parse_res(handle, script, parameters, "", length_of(script),
                                   length_of(parameters), 0, &length);
  check(report != NULL && length == length_of(report), "report comes with its length");
  check(report != NULL && strstr(report, "\"ErrCode\":0,") != NULL, "script compiles");
  release_ptr_val(report);
}

static void feed(int64_t handle, const char* rows) { set_row_data(handle, rows, length_of(rows)); }

static void calculate(int64_t handle, uint32_t first_row) {
  uint32_t length = 0;
  char* answer = exec_parser_cal(handle, first_row, 0, &length);
  check_text(answer, length, success, "calculation succeeds");
}

static void play_session(void) {
  const int64_t handle = create_instance();
  check(handle != 0, "instance is made");
  set_parser_instance_uuid(handle, 7);
  set_get_extra_data_callback(handle, answer_extra);
  set_indicator_extra_info(handle, 0x4000, "600000", "USHA", "", "UTC+08:00", 6, 4, 0, 9);
  compile(handle);

  feed(handle,
       "[{\"1\":20240103000000,\"8\":12,\"9\":5,\"11\":10.5},"
       "{\"1\":20240102000000,\"8\":11,\"9\":4,\"11\":9.5}]");
  calculate(handle, 0);
  const int32_t total = get_field_id_by_param_name(handle, "TOTAL", 5);
  check(total >= 20000, "line has a column of its own");
  check(get_row_num(handle) == 2, "two bars");
  check(get_current_row_index(handle, 20240103000000) == 1, "bars are in order of their keys");

  /* 11 - 2 * 4 + 9.5, 12 - 2 * 5 + 10.5, then a new bar with 13 - 2 * 6 + 11.5. */
  feed(handle, "[{\"1\":20240104000000,\"8\":13,\"9\":6,\"11\":11.5}]");
  calculate(handle, 2);
  uint32_t length = 0;
  char* values = get_data_arr(handle, (uint32_t)total, 2, 3, &length);
  check_text(values, length, "{\"count\":3,\"data\":[12.500000,12.500000,12.500000]}",
             "line has its values");
  set_column_data(handle, 20240104000000, 11, 20.0);
  calculate(handle, 2);
  check(get_data_by_col_row(handle, 2, (uint32_t)total) == 21.0, "changed bar counts");
  char* shapes = get_shapes(handle, &length);
  check_text(shapes, length, "[]", "nothing is drawn");

  delete_instance(handle);
  delete_instance(handle);
  check(get_row_num(handle) == 0, "deleted handle has no bars");
  check(is_null(get_data_by_col_row(handle, 0, (uint32_t)total)), "deleted handle gives null");
  release_ptr_val(NULL);
}

int main(void) {
  play_session();
  return failures == 0 ? 0 : 1;
}
