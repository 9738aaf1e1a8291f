/* quor_advice.h - what to tell the author of a script: what is wrong, where, and what to write.
 *
 * A client compiles a script through quor_parser.h and hands script and report to quor_advise:
 *
 *   uint32_t length = 0;
 *   char* report = get_pre_parse_res(handle, script, "", "", size, 0, 0, &length);
 *   quor_advice_input input = QUOR_ADVICE_INPUT;
 *   input.script = script;
 *   input.script_length = size;
 *   input.report = report;
 *   input.report_length = length;
 *   quor_findings* findings = quor_advise(&input);
 *   for (uint32_t i = 0; i < quor_findings_count(findings); ++i) {
 *     const quor_finding* finding = quor_findings_at(findings, i);
 *     printf("%u:%u: %s\n", finding->line, finding->column, finding->sentence);
 *   }
 *   quor_findings_free(findings);
 *   release_ptr_val(report);
 *
 * This library neither links nor calls the parser, and has a version of its own. It knows texts
 * only: it has no state, no thread and no file.
 *
 * Text
 *   Every text that goes in is a pointer and a length in bytes, without a terminator, UTF-8; a null
 * pointer with length 0 is an empty text. It is read during the call only. Every text that comes
 * out ends in a zero that its length, where one is told, excludes. Unless a call says otherwise it
 * belongs to the object that it was got from and lives as long.
 *
 * Bad calls
 *   A null object has no findings and empty texts. An index beyond the end gives null. No exception
 * leaves a call: when memory runs out, a call gives null.
 *
 * Threads
 *   Any thread may make any call; an object may be read by several at a time.
 */
#ifndef QUOR_ADVICE_H
#define QUOR_ADVICE_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(QUOR_ADVICE_BUILDING)
#define QUOR_ADVICE_API __declspec(dllexport)
#else
#define QUOR_ADVICE_API __declspec(dllimport)
#endif
#else
#define QUOR_ADVICE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this interface; quor_advice_version tells that of the library. */
#define QUOR_ADVICE_VERSION 1

/* Severities. */
#define QUOR_ADVICE_ERROR 1   /* the parser refuses the script, or its calculation failed */
#define QUOR_ADVICE_WARNING 2 /* it takes it, but its author can't have meant it */

/* A change of the script: `text` in place of the bytes from `begin` to in front of `end`. */
typedef struct quor_fix {
  uint32_t begin;
  uint32_t end;
  const char* text;
  const char* title; /* what it does, "write EMA" */
} quor_fix;

/* One thing to say. Lines and columns count from 1, columns and lengths in characters of UTF-8; all
 * are 0 for a finding that belongs to no place. `begin` and `end` are the same place in bytes. */
typedef struct quor_finding {
  int32_t severity;
  int32_t code; /* of the parser; 0 for warnings */
  uint32_t line;
  uint32_t column;
  uint32_t length;
  uint32_t begin;
  uint32_t end;
  const char* sentence;   /* "nothing defines EMMA" */
  const char* suggestion; /* "did you mean EMA?"; empty where there is none */
  const quor_fix* fixes;  /* the best first */
  uint32_t fix_count;
} quor_finding;

/* Compiles another script with the same parameters, and gives its report with the length; null if
 * it can't. With get_pre_parse_res: on an instance of its own, so that the script in use stays. */
typedef char* (*quor_advice_compile)(void* context, const char* script, uint32_t script_length,
                                     uint32_t* report_length);

/* Takes a report back that was compiled; release_ptr_val does. */
typedef void (*quor_advice_release)(char* report);

/* What advice is made from. Begin with QUOR_ADVICE_INPUT, which sets the version and leaves all the
 * rest empty; what stays empty is unknown. */
typedef struct quor_advice_input {
  uint32_t version;
  const char* script;
  uint32_t script_length;
  const char* parameters; /* as get_pre_parse_res took them */
  uint32_t parameters_length;
  const char* report; /* of get_pre_parse_res */
  uint32_t report_length;
  const char* answer; /* of exec_parser_cal, if the script was calculated */
  uint32_t answer_length;
  uint32_t period; /* the period code that the instance has */
  /* With them all errors are told instead of the first one, and fixes are tried before they are
   * offered, which finds more of them. Both or none. */
  quor_advice_compile compile;
  quor_advice_release release;
  void* context; /* handed to `compile` */
} quor_advice_input;

#define QUOR_ADVICE_INPUT \
  { QUOR_ADVICE_VERSION, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 }

/* The findings of a script. */
typedef struct quor_findings quor_findings;

/* Null for a null pointer, another version, or without memory. To be freed. */
QUOR_ADVICE_API quor_findings* quor_advise(const quor_advice_input* input);
QUOR_ADVICE_API void quor_findings_free(quor_findings* findings);

/* The findings in the order of their places, those without a place first. */
QUOR_ADVICE_API uint32_t quor_findings_count(const quor_findings* findings);
QUOR_ADVICE_API const quor_finding* quor_findings_at(const quor_findings* findings, uint32_t index);

/* The same as a JSON array of objects with the keys severity, line, column, length, code, sentence
 * and suggestion. */
QUOR_ADVICE_API const char* quor_findings_json(const quor_findings* findings, uint32_t* length);

/* The same as compilers print it, each with its line of source and a caret under the mistake. */
QUOR_ADVICE_API const char* quor_findings_text(const quor_findings* findings, uint32_t* length);

/* What a code of the parser means, and what to do about it, in plain words: a sentence each that
 * lives as long as the program; null for a code that there isn't. */
QUOR_ADVICE_API const char* quor_advice_meaning(int32_t code);
QUOR_ADVICE_API const char* quor_advice_cure(int32_t code);

/* The code at a place in the table of all codes, from 0; 0 behind the last one. */
QUOR_ADVICE_API int32_t quor_advice_code(uint32_t index);

/* The script in its one layout, as `quor format` writes it; the same text if it can't be read. To
 * be given back through quor_advice_release_text. */
QUOR_ADVICE_API char* quor_advice_format(const char* script, uint32_t script_length,
                                         uint32_t* length);
QUOR_ADVICE_API void quor_advice_release_text(char* text);

/* "0.9.0"; lives as long as the program. */
QUOR_ADVICE_API const char* quor_advice_version(void);

#ifdef __cplusplus
}
#endif

#endif
