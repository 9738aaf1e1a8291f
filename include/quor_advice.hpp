// quor_advice.hpp - what to tell the author of a script, for hosts in C++17 or later. Header only,
// over quor_advice.h and quor_parser.hpp; links both libraries.
//
//   quor::Parser parser;
//   const quor::Answer report = parser.compile(script);
//   for (const quor::Finding& finding : quor::findings(script, report))
//     std::cout << finding.line << ':' << finding.column << ": " << finding.sentence << '\n';
//
// Nothing here throws but what the standard library throws when memory runs out.
#ifndef QUOR_ADVICE_HPP
#define QUOR_ADVICE_HPP

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quor_advice.h"
#include "quor_parser.hpp"

namespace quor {

/// A change of a script: `text` in place of the bytes from `begin` to in front of `end`.
struct Fix {
  size_t begin = 0;
  size_t end = 0;
  std::string text;
  std::string title;  ///< what it does, "write EMA"
};

/// One thing to say. Lines and columns count from 1, columns and lengths in characters; all are 0
/// for a finding that belongs to no place.
struct Finding {
  bool is_error = false;  ///< else a warning
  int code = 0;           ///< of the parser; 0 for warnings
  uint32_t line = 0;
  uint32_t column = 0;
  uint32_t length = 0;
  size_t begin = 0;  ///< the same place in bytes
  size_t end = 0;
  std::string sentence;
  std::string suggestion;  ///< empty where there is none
  std::vector<Fix> fixes;  ///< the best first
};

/// What a script was compiled with.
struct Setting {
  std::string parameters;  ///< JSON
  uint32_t period = 0;     ///< 0: it isn't known
  std::string security;
  std::string market;
};

namespace detail {

/// Compiles on an instance of its own, whatever goes on in the one that the script is used in.
inline char* compile_again(void* context, const char* script, uint32_t script_length,
                           uint32_t* report_length) {
  const Setting& setting = *static_cast<const Setting*>(context);
  Parser parser;
  parser.set_subject(setting.period == 0 ? period_day : setting.period, setting.security,
                     setting.market);
  const Text parameters(setting.parameters);
  return get_pre_parse_res(parser.handle(), script, parameters.data, "", script_length,
                           parameters.size, 0, report_length);
}

inline Finding finding_of(const quor_finding& from) {
  Finding finding{from.severity == QUOR_ADVICE_ERROR,
                  from.code,
                  from.line,
                  from.column,
                  from.length,
                  from.begin,
                  from.end,
                  from.sentence,
                  from.suggestion,
                  {}};
  for (uint32_t i = 0; i < from.fix_count; ++i) {
    const quor_fix& fix = from.fixes[i];
    finding.fixes.push_back({fix.begin, fix.end, fix.text, fix.title});
  }
  return finding;
}

}  // namespace detail

/// The findings of a script in the order of their places, those without a place first. `report` is
/// what its compile gave, `answer` what a run gave if there was one.
inline std::vector<Finding> findings(std::string_view script, const Answer& report,
                                     const Setting& setting = {}, const Answer& answer = {}) {
  const detail::Text texts[] = {detail::Text(script), detail::Text(setting.parameters),
                                detail::Text(report.text), detail::Text(answer.text)};
  Setting own = setting;
  quor_advice_input input = QUOR_ADVICE_INPUT;
  input.script = texts[0].data;
  input.script_length = texts[0].size;
  input.parameters = texts[1].data;
  input.parameters_length = texts[1].size;
  input.report = texts[2].data;
  input.report_length = texts[2].size;
  input.answer = texts[3].data;
  input.answer_length = texts[3].size;
  input.period = setting.period;
  input.compile = &detail::compile_again;
  input.release = &release_ptr_val;
  input.context = &own;
  const std::unique_ptr<quor_findings, decltype(&quor_findings_free)> all(quor_advise(&input),
                                                                          &quor_findings_free);
  std::vector<Finding> found;
  const uint32_t count = quor_findings_count(all.get());
  found.reserve(count);
  for (uint32_t i = 0; i < count; ++i)
    found.push_back(detail::finding_of(*quor_findings_at(all.get(), i)));
  return found;
}

/// The script after a change.
inline std::string changed(std::string script, const Fix& fix) {
  if (fix.begin <= fix.end && fix.end <= script.size())
    script.replace(fix.begin, fix.end - fix.begin, fix.text);
  return script;
}

/// What a code means, and what to do about it; empty for a code that there isn't.
inline std::string_view meaning(int code) { return detail::view(quor_advice_meaning(code)); }
inline std::string_view cure(int code) { return detail::view(quor_advice_cure(code)); }

/// The script in its one layout.
inline std::string laid_out(std::string_view script) {
  const detail::Text text(script);
  uint32_t length = 0;
  const std::unique_ptr<char, decltype(&quor_advice_release_text)> out(
      quor_advice_format(text.data, text.size, &length), &quor_advice_release_text);
  return out == nullptr ? std::string(script) : std::string(out.get(), length);
}

}  // namespace quor

#endif
