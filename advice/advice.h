// Advice for the author of a script: what is wrong, where, and what to write instead.
//
// A program compiles a script with the library, runs it if it wants, and hands the texts that it
// got to `advise`. The answer is a list of findings with places in the author's own text:
//
//   quor_advice::Input input;
//   input.script = "DIF:EMMA(C,12)-EMA(C,26);";
//   input.report = report;  // what get_pre_parse_res gave
//   for (const auto& finding : quor_advice::advise(input)) ...
//   // line 1, column 5, length 4, code 2: "nothing defines EMMA", "did you mean EMA?"
//
// The room knows the library's texts only; it neither links nor calls it. All functions are safe to
// call from several threads, take any bytes, and throw nothing but std::bad_alloc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_advice {

enum class Severity {
  error,    ///< the library refuses the script, or its calculation failed
  warning,  ///< the library takes it, but it can't be what its author meant
};

/// One thing to say. Places count from 1, in characters of UTF-8, a tab as one; a carriage return,
/// a line feed and the two together end a line. A byte that is no UTF-8 counts as a character.
struct Finding {
  Severity severity = Severity::warning;
  size_t line = 0;         ///< 0 if the finding belongs to no place in the script
  size_t column = 0;       ///< 0 with line 0
  size_t length = 0;       ///< in characters, within the line; at least 1, 0 with line 0
  int64_t code = 0;        ///< of the library; 0 for warnings
  std::string sentence;    ///< "nothing defines EMMA"; no capital at its start, no full stop
  std::string suggestion;  ///< "did you mean EMA?"; empty where there is none
};

/// What a calculation showed.
struct RunFacts {
  std::vector<int64_t> keys;            ///< of the bars, YYYYMMDDhhmmss, in any order
  std::vector<std::string> null_lines;  ///< names of lines that are null on every bar
  /// Numbers of bar fields for which there was no data; lines that read them aren't blamed.
  std::vector<uint32_t> missing_fields;
};

/// Texts are views: they must live while `advise` works, no longer.
struct Input {
  std::string_view script;      ///< as the author wrote it, UTF-8
  std::string_view parameters;  ///< JSON as get_pre_parse_res took it; may be empty
  std::string_view report;      ///< what get_pre_parse_res gave; empty: no error is known
  std::string_view answer;      ///< what exec_parser_cal gave; empty if there was no calculation
  int32_t period = 0;           ///< period code as set_indicator_extra_info took it; 0: unknown
  std::optional<RunFacts> run;  ///< after a calculation
};

/// The findings, ordered by their places, those without a place first; at most 100 with a place. At
/// most one is an error: the library stops at the first.
std::vector<Finding> advise(const Input& input);

/// The names in a script as the library knows them: in capitals and without blanks, each once, in
/// the order of the script.
struct ScriptNames {
  std::vector<std::string> lines;      ///< declared with ':' and ':='
  std::vector<std::string> constants;  ///< declared with CONST
  std::vector<std::string> words;      ///< all words outside of quotes, the ones above included
};
ScriptNames names_in(std::string_view script);

/// Findings as compilers print them, each with its line of source and carets below:
///
///   macd.quor:3:5: error: nothing defines EMMA (code 2); did you mean EMA?
///   DIF:EMMA(C,12)-EMA(C,26);
///       ^~~~
///
/// `file` is the name in front; a finding without a place has only that and no source.
std::string compiler_text(const std::vector<Finding>& findings, std::string_view script,
                          std::string_view file);

/// Findings as a JSON array of objects with the keys severity ("error", "warning"), line, column,
/// length, code, sentence and suggestion.
std::string json_text(const std::vector<Finding>& findings);

}  // namespace quor_advice
