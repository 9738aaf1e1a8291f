/* Shows an author what is wrong with a script: the line, a caret under the mistake, and the script
 * after the best change for each finding. Reads the script from a file, or takes one with mistakes.
 *
 *   advice [SCRIPT]
 */
#include <stdio.h>
#include <stdlib.h>

#include "quor_advice.h"
#include "quor_parser.h"

static const char faulty[] =
    "QUICK:EMMA(C,12),COLORRED;\n"
    "SLOW:MA(C,20)\n"
    "UP:CROSS(QUICK,SLOW);\n"
    "C-O,STICK,BOLD;\n";

/* Compiles on an instance of its own, as advice needs it. */
static char* compile(void* context, const char* script, uint32_t script_length,
                     uint32_t* report_length) {
  const int64_t handle = create_instance();
  char* const report =
      get_pre_parse_res(handle, script, "", "", script_length, 0, 0, report_length);
  (void)context;
  delete_instance(handle);
  return report;
}

/* The whole of a file, to be freed; null if it can't be read. */
static char* read_file(const char* path, uint32_t* size) {
  enum { longest = 1 << 20 };
  FILE* const file = fopen(path, "rb");
  char* const text = malloc(longest);
  if (file == NULL || text == NULL) {
    if (file != NULL) fclose(file);
    free(text);
    return NULL;
  }
  *size = (uint32_t)fread(text, 1, longest, file);
  fclose(file);
  return text;
}

/* The source line of a finding and a caret below it; columns of letters that are one place wide. */
static void show_place(const char* script, uint32_t size, const quor_finding* finding) {
  uint32_t begin = finding->begin;
  uint32_t end = finding->begin;
  uint32_t i;
  while (begin > 0 && script[begin - 1] != '\n') --begin;
  while (end < size && script[end] != '\n') ++end;
  printf("  %.*s\n  ", (int)(end - begin), script + begin);
  for (i = 1; i < finding->column; ++i) putchar(' ');
  putchar('^');
  for (i = 1; i < finding->length; ++i) putchar('~');
  putchar('\n');
}

int main(int argc, char** argv) {
  uint32_t size = (uint32_t)sizeof faulty - 1;
  uint32_t i;
  char* const file = argc > 1 ? read_file(argv[1], &size) : NULL;
  const char* const script = argc > 1 ? file : faulty;
  quor_advice_input input = QUOR_ADVICE_INPUT;
  quor_findings* findings;
  if (script == NULL) {
    fprintf(stderr, "%s can't be read\n", argv[1]);
    return 1;
  }
  input.script = script;
  input.script_length = size;
  input.report = compile(NULL, script, size, &input.report_length);
  input.compile = compile;
  input.release = release_ptr_val;
  findings = quor_advise(&input);
  for (i = 0; i < quor_findings_count(findings); ++i) {
    const quor_finding* const finding = quor_findings_at(findings, i);
    const char* const kind = finding->severity == QUOR_ADVICE_ERROR ? "error" : "warning";
    printf("line %u: %s: %s", (unsigned)finding->line, kind, finding->sentence);
    if (finding->suggestion[0] != '\0') printf("; %s", finding->suggestion);
    putchar('\n');
    if (finding->line > 0) show_place(script, size, finding);
    if (finding->fix_count > 0) printf("  could be mended: %s\n", finding->fixes[0].title);
  }
  printf("%u findings\n", (unsigned)quor_findings_count(findings));
  quor_findings_free(findings);
  release_ptr_val((char*)input.report);
  free(file);
  return 0;
}
