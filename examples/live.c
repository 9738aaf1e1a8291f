/* A live client: bars come through a pipe, a line each, and every line is calculated at once. A
 * line with the time of the one before is the same bar, further on. For examples/live.csv it prints
 * what examples/live.txt holds.
 *
 *   tail -f bars.csv | live
 */
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include "quor_parser.h"

enum { period_five_minutes = 0x3005 };

static const char script[] = "FAST:MA(C,2);SLOW:MA(C,3);CROSS(FAST,SLOW),NOTICE('up');";
static const char* const lines[] = {"FAST", "SLOW"};

/* No call back into the instance from here: a client copies what it hears and returns. */
static void hear_notice(int64_t time, uint32_t column_id, uint64_t uuid, const char* text) {
  (void)time, (void)column_id, (void)uuid, (void)text;
  puts("up");
}

/* Whether a report or an answer says success; takes its buffer back. */
static int is_success(char* answer) {
  const int is_good = answer != NULL && strstr(answer, "\"ErrCode\":0,") != NULL;
  if (!is_good) fprintf(stderr, "%s\n", answer == NULL ? "no answer" : answer);
  release_ptr_val(answer);
  return is_good;
}

/* "20240108093500,10,10.4,9.8,10.2,1200" as an object of the rows' JSON; the numbers stay as they
 * are written. 0 for a line of another form. */
static int write_row(char* out, size_t size, char* line, uint64_t* key) {
  static const int fields[] = {7, 8, 9, 11, 13}; /* open, high, low, close, volume */
  const char* cell = strtok(line, ",\r\n");
  if (cell == NULL || sscanf(cell, "%" SCNu64, key) != 1) return 0;
  int end = snprintf(out, size, "[{\"1\":%" PRIu64, *key);
  for (size_t i = 0; i < sizeof fields / sizeof *fields; ++i) {
    cell = strtok(NULL, ",\r\n");
    if (cell == NULL || end < 0 || (size_t)end >= size) return 0;
    end += snprintf(out + end, size - (size_t)end, ",\"%d\":%s", fields[i], cell);
  }
  if ((size_t)end + 3 > size) return 0;
  memcpy(out + end, "}]", sizeof "}]");
  return 1;
}

static void show_row(int64_t parser, uint64_t key, uint32_t row) {
  printf("%" PRIu64, key);
  for (size_t i = 0; i < sizeof lines / sizeof *lines; ++i) {
    const uint32_t size = (uint32_t)strlen(lines[i]);
    const int32_t column = get_field_id_by_param_name(parser, lines[i], size);
    const double value = get_data_by_col_row(parser, (int32_t)row, (uint32_t)column);
    if (value != value) {
      printf(" %s null", lines[i]);
    } else {
      printf(" %s %.2f", lines[i], value);
    }
  }
  printf("\n");
  fflush(stdout);
}

/* Takes a line; false when the calculation fails. */
static int follow(int64_t parser, char* line) {
  char row_text[512];
  uint64_t key = 0;
  if (!write_row(row_text, sizeof row_text, line, &key)) {
    fprintf(stderr, "no bar: %s\n", line);
    return 1;
  }
  set_row_data(parser, row_text, (uint32_t)strlen(row_text));
  const uint32_t row = get_current_row_index(parser, key);
  uint32_t length = 0;
  if (!is_success(exec_parser_cal(parser, row, 1, &length))) return 0;
  show_row(parser, key, row);
  return 1;
}

int main(void) {
  const int64_t parser = create_instance();
  set_parser_notice_callback_handler(hear_notice);
  set_indicator_extra_info(parser, period_five_minutes, "600000", "USHA", "", "UTC+08:00", 6, 4, 0,
                           9);
  uint32_t length = 0;
  int is_good = is_success(
      get_pre_parse_res(parser, script, "", "", (uint32_t)strlen(script), 0, 0, &length));
  char line[256];
  while (is_good && fgets(line, sizeof line, stdin) != NULL) is_good = follow(parser, line);
  delete_instance(parser);
  return is_good ? 0 : 1;
}
