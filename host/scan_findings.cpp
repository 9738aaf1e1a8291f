#include "scan_findings.h"

#include <algorithm>

namespace quor_host {

std::vector<quor_advice::Finding> findings_of(const quor::engine::Script& script) {
  quor_advice::Input input;
  input.script = script.source();
  input.parameters = script.parameters();
  input.report = script.report().text;
  input.answer = script.answer();
  return quor_advice::advise(input);
}

std::string error_text(const std::vector<quor_advice::Finding>& findings) {
  const auto error =
      std::ranges::find(findings, quor_advice::Severity::error, &quor_advice::Finding::severity);
  if (error == findings.end()) return "an error without a finding";
  return error->sentence + " (code " + std::to_string(error->code) + ")";
}

}  // namespace quor_host
