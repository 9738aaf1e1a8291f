// What advice is made from, and what comes out of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
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
  /// Of the bars, YYYYMMDDhhmmss, in any order; they must live as long as the texts of the input.
  std::span<const int64_t> keys;
  std::vector<std::string> null_lines;  ///< names of lines that are null on every bar
  /// Numbers of bar fields for which there was no data; lines that read them aren't blamed.
  std::vector<uint32_t> missing_fields;
};

/// What the host can answer when a script asks for more than bars.
struct Supply {
  bool has_calendar = false;  ///< the security's trading calendar
  /// The market constants that it has a number for: MINPRICE, UNIT, SHARECOUNTPERUNIT.
  std::vector<std::string> constants;
  /// How its user hands over what is missing, "give it with --calendar"; stands as suggestion.
  std::string calendar_advice;
  std::string constant_advice;
};

/// Texts are views: they must live while `advise` works, no longer.
struct Input {
  std::string_view script;       ///< as the author wrote it, UTF-8
  std::string_view parameters;   ///< JSON as get_pre_parse_res took it; may be empty
  std::string_view report;       ///< what get_pre_parse_res gave; empty: no error is known
  std::string_view answer;       ///< what exec_parser_cal gave; empty if there was no calculation
  int32_t period = 0;            ///< period code as set_indicator_extra_info took it; 0: unknown
  std::optional<RunFacts> run;   ///< after a calculation
  std::optional<Supply> supply;  ///< nothing: it isn't known
  /// Compiles another script with the same parameters and gives its report, so that more than the
  /// first error is told; empty: there is nobody to ask.
  std::function<std::string(std::string_view script)> compile;
};

}  // namespace quor_advice
