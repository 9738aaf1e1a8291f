// The face for C: findings as plain structures that one object owns, with all their texts.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "advice/advice.h"
#include "advice/code_help.h"
#include "advice/fixes.h"
#include "advice/formatting.h"
#include "quor_advice.h"

struct quor_findings {
  std::deque<std::string> texts;  ///< what the structures point at
  std::deque<std::vector<quor_fix>> fixes;
  std::vector<quor_finding> findings;
  std::string json;
  std::string text;

  const char* keep(const std::string& text_of) { return texts.emplace_back(text_of).c_str(); }
};

namespace {

using quor_advice::Finding;

std::string_view view(const char* text, uint32_t length) {
  return text == nullptr ? std::string_view() : std::string_view(text, length);
}

uint32_t size_of(size_t size) {
  return static_cast<uint32_t>(std::min<size_t>(size, std::numeric_limits<uint32_t>::max()));
}

/// What `make` gives; null where it throws, which nothing but missing memory does.
template <typename Make>
auto guarded(const Make& make) noexcept -> decltype(make()) {
  try {
    return make();
  } catch (...) {
    return nullptr;
  }
}

const char* told(const std::string& text, uint32_t* length) {
  if (length != nullptr) *length = size_of(text.size());
  return text.c_str();
}

quor_advice::Input input_of(const quor_advice_input& given) {
  quor_advice::Input input;
  input.script = view(given.script, given.script_length);
  input.parameters = view(given.parameters, given.parameters_length);
  input.report = view(given.report, given.report_length);
  input.answer = view(given.answer, given.answer_length);
  input.period = static_cast<int32_t>(given.period);
  if (given.compile == nullptr || given.release == nullptr) return input;
  input.compile = [&given](std::string_view script) {
    uint32_t length = 0;
    const std::unique_ptr<char, quor_advice_release> report(
        given.compile(given.context, script.data(), size_of(script.size()), &length),
        given.release);
    return report == nullptr ? std::string() : std::string(report.get(), length);
  };
  return input;
}

/// A finding with its fixes, all their texts kept by the object.
quor_finding finding_of(quor_findings& all, const quor_advice::Input& input,
                        const quor_advice::Reading& reading, const Finding& finding) {
  std::vector<quor_fix>& fixes = all.fixes.emplace_back();
  for (const quor_advice::Fix& fix : quor_advice::fixes_of(input, finding)) {
    fixes.push_back({size_of(fix.place.begin), size_of(fix.place.end), all.keep(fix.text),
                     all.keep(fix.title)});
  }
  const bool is_error = finding.severity == quor_advice::Severity::error;
  const quor_advice::Place place = quor_advice::place_of(reading, finding);
  quor_finding out{};
  out.severity = is_error ? QUOR_ADVICE_ERROR : QUOR_ADVICE_WARNING;
  out.code = static_cast<int32_t>(finding.code);
  out.line = size_of(finding.line);
  out.column = size_of(finding.column);
  out.length = size_of(finding.length);
  out.begin = size_of(place.begin);
  out.end = size_of(place.end);
  out.sentence = all.keep(finding.sentence);
  out.suggestion = all.keep(finding.suggestion);
  out.fixes = fixes.data();
  out.fix_count = size_of(fixes.size());
  return out;
}

}  // namespace

extern "C" {

quor_findings* quor_advise(const quor_advice_input* given) {
  if (given == nullptr || given->version != QUOR_ADVICE_VERSION) return nullptr;
  return guarded([given] {
    auto all = std::make_unique<quor_findings>();
    const quor_advice::Input input = input_of(*given);
    const quor_advice::Reading reading = quor_advice::read_script(input.script, input.parameters);
    const std::vector<Finding> findings = quor_advice::advise(input);
    for (const Finding& finding : findings)
      all->findings.push_back(finding_of(*all, input, reading, finding));
    all->json = quor_advice::json_text(findings);
    all->text = quor_advice::compiler_text(findings, input.script, "script");
    return all.release();
  });
}

void quor_findings_free(quor_findings* findings) { delete findings; }

uint32_t quor_findings_count(const quor_findings* findings) {
  return findings == nullptr ? 0 : size_of(findings->findings.size());
}

const quor_finding* quor_findings_at(const quor_findings* findings, uint32_t index) {
  return index < quor_findings_count(findings) ? &findings->findings[index] : nullptr;
}

const char* quor_findings_json(const quor_findings* findings, uint32_t* length) {
  static const std::string none;
  return told(findings == nullptr ? none : findings->json, length);
}

const char* quor_findings_text(const quor_findings* findings, uint32_t* length) {
  static const std::string none;
  return told(findings == nullptr ? none : findings->text, length);
}

const char* quor_advice_meaning(int32_t code) {
  const auto* const help = quor_advice::find_code_help(code);
  return help == nullptr ? nullptr : help->meaning.data();
}

const char* quor_advice_cure(int32_t code) {
  const auto* const help = quor_advice::find_code_help(code);
  return help == nullptr ? nullptr : help->cure.data();
}

int32_t quor_advice_code(uint32_t index) {
  const auto codes = quor_advice::code_help();
  return index < codes.size() ? static_cast<int32_t>(codes[index].code) : 0;
}

char* quor_advice_format(const char* script, uint32_t script_length, uint32_t* length) {
  return guarded([=] {
    const std::string text = quor_advice::format_script(view(script, script_length)).text;
    auto* const buffer = static_cast<char*>(std::malloc(text.size() + 1));
    if (buffer == nullptr) return buffer;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    if (length != nullptr) *length = size_of(text.size());
    return buffer;
  });
}

void quor_advice_release_text(char* text) { std::free(text); }

const char* quor_advice_version(void) { return QUOR_VERSION; }

}  // extern "C"
