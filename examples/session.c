/* A whole session of a client with the parser: compile, history, the forming bar, a new bar, the
 * draw list, an error. It prints what examples/session.txt holds. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "quor_parser.h"

/* The ids under which a row carries its fields. A client sends at least those that the report
 * lists in ExtraKLineFieldList; the library passes over the others. */
enum { id_key = 1, id_open = 7, id_high = 8, id_low = 9, id_close = 11, id_volume = 13 };

enum { period_one_day = 0x4000 };

enum { log_errors = 2 };

typedef struct {
  int64_t key; /* YYYYMMDDhhmmss */
  double open, high, low, close, volume;
} Bar;

static const char script[] =
    "AVG:MA(C,N),COLORRED,LINETHICK2;\n"
    "CROSS(C,AVG),NOTICE('up');\n";
static const char parameters[] = "[{\"PARAM_NAME\":\"N\",\"DEFAULT\":2}]";

static const Bar history[] = {
    {20240102000000, 12, 12.5, 11.5, 12, 300},
    {20240103000000, 12, 12, 9.5, 10, 400},
    {20240104000000, 10, 10, 9, 9, 100},
};
static const Bar forming_bar = {20240104000000, 10, 11.5, 9, 11, 200};
static const Bar next_bar = {20240105000000, 13, 14, 13, 14, 100};

static uint32_t size_of(const char* text) { return (uint32_t)strlen(text); }

static int is_null(double value) { return value != value; }

/* ---- What the library tells by itself. Neither handler may call the instance back. ---- */

static void show_log_line(uint8_t level, const char* text, uint64_t uuid) {
  fprintf(stderr, "log %u of instance %" PRIu64 ": %s\n", level, uuid, text);
}

static void show_notice(int64_t time, uint32_t column_id, uint64_t uuid, const char* text) {
  (void)time; /* the wall clock, which would make each printout differ */
  printf("notice of instance %" PRIu64 ", column %" PRIu32 ": %s\n", uuid, column_id, text);
}

/* ---- Texts of the library ---- */

/* Whether a report or an answer says success. A client with a JSON reader asks for the key. */
static int is_success(const char* answer) {
  return answer != NULL && strstr(answer, "\"ErrCode\":0,") != NULL;
}

/* Prints a text of the library and gives its buffer back. */
static void show_text(const char* title, char* text) {
  printf("%s: %s\n", title, text == NULL ? "nothing" : text);
  release_ptr_val(text);
}

/* ---- The steps of a session ---- */

static int compile(int64_t parser, const char* text) {
  uint32_t length = 0;
  char* report = get_pre_parse_res(parser, text, parameters, "", size_of(text), size_of(parameters),
                                   0, &length);
  const int is_compiled = is_success(report);
  show_text("report", report);
  return is_compiled;
}

/* Writes a bar as an object of the rows' JSON. A client that has called setlocale mustn't print
 * numbers with printf. A value that it doesn't have is null or left out. */
static size_t write_bar(char* out, size_t size, const Bar* bar) {
  static const char format[] =
      "{\"%d\":%" PRId64 ",\"%d\":%.17g,\"%d\":%.17g,\"%d\":%.17g,\"%d\":%.17g,\"%d\":%.17g}";
  return (size_t)snprintf(out, size, format, id_key, bar->key, id_open, bar->open, id_high,
                          bar->high, id_low, bar->low, id_close, bar->close, id_volume,
                          bar->volume);
}

/* Hands bars over: new ones, and others in place of those with the same key. One call for many
 * bars is quicker than many calls. */
static int feed(int64_t parser, const Bar* bars, size_t count) {
  enum { bar_size = 256 };
  char* rows = malloc((count + 1) * bar_size);
  if (rows == NULL) return 0;
  size_t end = 0;
  for (size_t i = 0; i < count; ++i) {
    rows[end++] = i == 0 ? '[' : ',';
    end += write_bar(rows + end, bar_size, &bars[i]);
  }
  rows[end++] = ']';
  set_row_data(parser, rows, (uint32_t)end);
  free(rows);
  return 1;
}

/* Calculates from a row on. Notices are for what happens now, so history goes without them. */
static int calculate(int64_t parser, uint32_t first_row, uint8_t with_notices) {
  uint32_t length = 0;
  char* answer = exec_parser_cal(parser, first_row, with_notices, &length);
  const int is_done = is_success(answer);
  if (is_done) {
    release_ptr_val(answer);
  } else {
    show_text("calculation failed", answer);
  }
  return is_done;
}

static void show_line(int64_t parser, const char* name) {
  const int32_t column = get_field_id_by_param_name(parser, name, size_of(name));
  if (column < 0) return; /* no such line */
  const int32_t rows = (int32_t)get_row_num(parser);
  for (int32_t row = 0; row < rows; ++row) {
    const double key = get_data_by_col_row(parser, row, id_key);
    const double value = get_data_by_col_row(parser, row, (uint32_t)column);
    printf("  %.0f ", key);
    if (is_null(value)) {
      printf("%s null\n", name);
    } else {
      printf("%s %.2f\n", name, value);
    }
  }
}

/* The row of a bar is the first one whose values may differ once that bar is new or has changed. */
static uint32_t row_of(int64_t parser, const Bar* bar) {
  return get_current_row_index(parser, (uint64_t)bar->key);
}

static int run_history(int64_t parser) {
  if (!feed(parser, history, sizeof history / sizeof *history)) return 0;
  if (!calculate(parser, 0, 0)) return 0;
  puts("history:");
  show_line(parser, "AVG");
  return 1;
}

/* The last bar changes while it forms: as a whole bar, or cell by cell. */
static int run_forming_bar(int64_t parser) {
  if (!feed(parser, &forming_bar, 1)) return 0;
  const uint32_t row = row_of(parser, &forming_bar);
  if (!calculate(parser, row, 1)) return 0;
  puts("forming bar, close 11:");
  show_line(parser, "AVG");

  set_column_data(parser, (uint64_t)forming_bar.key, id_close, 13);
  if (!calculate(parser, row, 1)) return 0;
  puts("forming bar, close 13:");
  show_line(parser, "AVG");
  return 1;
}

static int run_next_bar(int64_t parser) {
  if (!feed(parser, &next_bar, 1)) return 0;
  if (!calculate(parser, row_of(parser, &next_bar), 1)) return 0;
  puts("next bar:");
  show_line(parser, "AVG");
  return 1;
}

static void show_results(int64_t parser) {
  const int32_t column = get_field_id_by_param_name(parser, "AVG", 3);
  const uint32_t last_row = get_row_num(parser) - 1;
  uint32_t length = 0;
  show_text("last two values", get_data_arr(parser, (uint32_t)column, last_row, 2, &length));
  show_text("draw list", get_shapes(parser, &length));
}

/* The report names what is wrong and the statement, the first one being 0. */
static int show_error(void) {
  const int64_t parser = create_instance();
  if (parser == 0) return 0;
  const int is_compiled = compile(parser, "AVG:MA(C,N);TWICE:AVRAGE(C,N)*2;");
  delete_instance(parser);
  return !is_compiled;
}

static int run_session(int64_t parser) {
  set_parser_instance_uuid(parser, 1);
  set_indicator_extra_info(parser, period_one_day, "600000", "USHA", "", "UTC+08:00", 6, 4, 0, 9);
  if (!compile(parser, script) || !run_history(parser) || !run_forming_bar(parser) ||
      !run_next_bar(parser)) {
    return 0;
  }
  show_results(parser);
  return 1;
}

int main(void) {
  set_logger_handler(show_log_line, log_errors);
  set_parser_notice_callback_handler(show_notice);

  const int64_t parser = create_instance();
  if (parser == 0) return EXIT_FAILURE;
  const int is_played = run_session(parser);
  delete_instance(parser);
  return is_played && show_error() ? EXIT_SUCCESS : EXIT_FAILURE;
}
