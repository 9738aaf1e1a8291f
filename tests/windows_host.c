/* A host of Windows that loads the library while it runs, calls it on a thread as small as Windows
 * makes them by default, and lets it go again.
 *   windows_host LIBRARY */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "quor_parser.h"

static int failures = 0;

static void check(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "failed: %s\n", what);
  ++failures;
}

static struct {
  __typeof__(create_instance)* create;
  __typeof__(delete_instance)* remove;
  __typeof__(get_pre_parse_res)* compile;
  __typeof__(set_row_data)* feed;
  __typeof__(exec_parser_cal)* calculate;
  __typeof__(get_field_id_by_param_name)* column_of;
  __typeof__(get_data_by_col_row)* value;
  __typeof__(release_ptr_val)* release;
} library;

static void find(HMODULE module, const char* name, void* function) {
  const FARPROC found = GetProcAddress(module, name);
  check(found != NULL, name);
  memcpy(function, &found, sizeof found);
}

static void find_all(HMODULE module) {
  find(module, "create_instance", &library.create);
  find(module, "delete_instance", &library.remove);
  find(module, "get_pre_parse_res", &library.compile);
  find(module, "set_row_data", &library.feed);
  find(module, "exec_parser_cal", &library.calculate);
  find(module, "get_field_id_by_param_name", &library.column_of);
  find(module, "get_data_by_col_row", &library.value);
  find(module, "release_ptr_val", &library.release);
}

static int has_code(char* text, const char* code) {
  const int has = text != NULL && strstr(text, code) != NULL;
  library.release(text);
  return has;
}

/* The value of the line A at the only bar, whose close is 2; -1 if the script fails. */
static double value_of(const char* script) {
  const char* bar = "[{\"1\":20240102000000,\"8\":2,\"9\":2,\"11\":2}]";
  const int64_t handle = library.create();
  uint32_t length = 0;
  double value = -1.0;
  char* report =
      library.compile(handle, script, "", "", (uint32_t)strlen(script), 0, 0, &length);
  if (has_code(report, "\"ErrCode\":0,")) {
    library.feed(handle, bar, (uint32_t)strlen(bar));
    if (has_code(library.calculate(handle, 0, 0, &length), "\"ErrCode\":0,")) {
      value = library.value(handle, 0, (uint32_t)library.column_of(handle, "A", 1));
    }
  }
  library.remove(handle);
  return value;
}

/* A:=open open ... open C close ... close; with as many of each as told. */
static double value_of_nested(const char* open, const char* close, int depth) {
  const size_t size = (size_t)depth * (strlen(open) + strlen(close)) + 8;
  char* script = malloc(size);
  if (script == NULL) return -1.0;
  strcpy(script, "A:=");
  for (int i = 0; i < depth; ++i) strcat(script, open);
  strcat(script, "C");
  for (int i = 0; i < depth; ++i) strcat(script, close);
  strcat(script, ";");
  const double value = value_of(script);
  free(script);
  return value;
}

static DWORD WINAPI play(LPVOID unused) {
  (void)unused;
  /* The first double at or above 1.0001, to 60 digits the power of 7000000.3. */
  const double power = value_of("A:=POW(C-0.9999,7000000.3);");
  (void)power;
  return 0;
}
