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

#include <string>
#include <string_view>
#include <vector>

#include "finding.h"

namespace quor_advice {

/// The findings, ordered by their places, those without a place first; at most 100 with a place.
/// The library stops at the first error; the others are found if `compile` is given, at most 20.
std::vector<Finding> advise(const Input& input);

/// The names in a script as the library knows them: in capitals and without blanks, each once, in
/// the order of the script.
struct ScriptNames {
  std::vector<std::string> lines;      ///< declared with ':' and ':='
  std::vector<std::string> constants;  ///< declared with CONST
  std::vector<std::string> words;      ///< all words outside of quotes, the ones above included
};
ScriptNames names_in(std::string_view script);

/// A name, in capitals, that can't serve for a parameter of a script.
struct ParameterFault {
  std::string name;
  bool is_idle = false;  ///< the parameter changes nothing; else it hides a word of the language
  Finding finding;       ///< an error, with its place where there is one
};
std::vector<ParameterFault> parameter_faults(std::string_view script,
                                             const std::vector<std::string>& names);

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
