#include "scan_findings.h"

#include <algorithm>
#include <utility>

namespace quor_host {

namespace {

quor_advice::Input input_of(const quor::engine::Script& script) {
  quor_advice::Input input;
  input.script = script.source();
  input.parameters = script.parameters();
  input.report = script.report().text;
  input.answer = script.answer();
  return input;
}

}  // namespace

std::vector<quor_advice::Finding> findings_of(const quor::engine::Script& script) {
  return quor_advice::advise(input_of(script));
}

std::vector<quor_advice::Finding> findings_of(const quor::engine::Script& script, uint32_t period,
                                              quor_advice::Supply supply) {
  quor_advice::Input input = input_of(script);
  input.period = static_cast<int32_t>(period);
  input.supply = std::move(supply);
  return quor_advice::advise(input);
}

std::string error_text(const std::vector<quor_advice::Finding>& findings) {
  const auto error =
      std::ranges::find(findings, quor_advice::Severity::error, &quor_advice::Finding::severity);
  if (error == findings.end()) return "an error without a finding";
  return error->sentence + " (code " + std::to_string(error->code) + ")";
}

}  // namespace quor_host
