/* A host of Windows that loads the library while it runs, calls it on a thread as small as Windows
 * makes them by default, and lets it go again.
 *   windows_host LIBRARY */
#include <locale.h>
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
  if (found == NULL) {
    fprintf(stderr, "%s is missing\n", name);
    exit(1);
  }
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
  char* report = library.compile(handle, script, "", "", (uint32_t)strlen(script), 0, 0, &length);
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

static void check_value(double value, double expected, const char* what) {
  const double last_place = nextafter(fabs(expected), INFINITY) - fabs(expected);
  check(fabs(value - expected) <= 2 * last_place, what);
}

static DWORD WINAPI play(LPVOID unused) {
  (void)unused;
  /* The deepest calls that compile, over a close of 2. */
  check(value_of_nested("IF(C>0,(1+", "),0)", 255) == 257.0, "conditions 255 deep");
  check(value_of_nested("ABS(1+", ")", 255) == 257.0, "calls 255 deep");
  check(value_of_nested("ABS(1+", ")", 256) == -1.0, "calls 256 deep are refused");

  /* To 60 digits by the series of the logarithm, the exponential function and the sine. Threads of
   * Windows start with less precision than the x87 unit would need for these. */
  check_value(value_of("A:=POW(1.0001,7000000.3);"), 0x1.c9027af37f3dfp+1009, "large power");
  check_value(value_of("A:=SIN(3.14159265358979);"), 0x1.d1a62633145c0p-49, "sine near pi");

  check(value_of("A:=C*0.75;") == 1.5, "decimal point under a decimal comma");
  const double random = value_of("A:=RAND(1000);");
  check(random >= 0.0 && random <= 1001.0, "random number");
  return 0;
}

static void play_on_thread(void) {
  const HANDLE thread =
      CreateThread(NULL, 1 << 20, play, NULL, STACK_SIZE_PARAM_IS_A_RESERVATION, NULL);
  check(thread != NULL, "thread starts");
  check(WaitForSingleObject(thread, 60000) == WAIT_OBJECT_0, "thread ends");
  CloseHandle(thread);
}

int main(int argc, char** argv) {
  /* The library shares the C library's locale with its host. */
  check(setlocale(LC_ALL, "German_Germany.1252") != NULL && atof("1,5") == 1.5, "decimal comma");
  for (int round = 0; argc == 2 && round < 2; ++round) {
    const HMODULE module = LoadLibraryA(argv[1]);
    if (module == NULL) {
      fprintf(stderr, "%s can't be loaded: %lu\n", argv[1], GetLastError());
      return 1;
    }
    find_all(module);
    play_on_thread();
    check(FreeLibrary(module), "library goes");
  }
  return argc == 2 && failures == 0 ? 0 : 1;
}
