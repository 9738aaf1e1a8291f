// quor_advice.hpp - what to tell the author of a script, for hosts in C++17 or later. Header only,
// over quor_advice.h and quor_parser.hpp; links both libraries.
//
//   quor::Script script("DIF:EMMA(C,12)-EMA(C,26);");
//   for (const quor::Finding& finding : script.findings())
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
#include <utility>
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

inline void set_subject(Parser& parser, const Setting& setting) {
  parser.set_subject(setting.period == 0 ? period_day : setting.period, setting.security,
                     setting.market);
}

/// Compiles on an instance of its own, whatever goes on in the one that the script is used in.
inline char* compile_again(void* context, const char* script, uint32_t script_length,
                           uint32_t* report_length) {
  const Setting& setting = *static_cast<const Setting*>(context);
  Parser parser;
  set_subject(parser, setting);
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

/// A script with its parser: compiled as soon as it is made, with findings before and behind each
/// calculation.
class Script {
 public:
  /// Handlers that a compile asks are set on a parser that is handed over.
  explicit Script(std::string text, Setting setting = {}, Parser parser = {})
      : text_(std::move(text)), setting_(std::move(setting)), parser_(std::move(parser)) {
    detail::set_subject(parser_, setting_);
    report_ = parser_.compile(text_, setting_.parameters);
  }

  /// Whether it compiled.
  explicit operator bool() const { return static_cast<bool>(report_); }
  const std::string& text() const { return text_; }
  const Report& report() const { return report_; }
  std::vector<Shape> shapes() const { return parser_.shapes(); }
  /// For handlers, bars and reading; another script must not be compiled with it.
  Parser& parser() { return parser_; }

  /// As Parser::calculate; findings tell of the last one.
  Answer calculate(uint32_t first_row, bool with_signals = false) {
    answer_ = parser_.calculate(first_row, with_signals);
    return answer_;
  }

  std::vector<Finding> findings() const {
    return quor::findings(text_, report_, setting_, answer_);
  }

 private:
  std::string text_;
  Setting setting_;
  Parser parser_;
  Report report_;
  Answer answer_;
};

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
