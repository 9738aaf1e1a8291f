#include "parameters.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "../errors.h"
#include "../input/json_files.h"
#include "../text.h"
#include "advice/advice.h"

namespace quor_host {
namespace {

/// The number as the library keeps it, with six decimals.
std::string kept_text(double value) {
  std::array<char, 400> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, 6);
  return {digits.data(), end.ptr};
}

}  // namespace

Setting parse_setting(const std::string& text) {
  const size_t mark = text.find('=');
  const auto value = mark == std::string::npos ? std::nullopt : to_number(text.substr(mark + 1));
  if (mark == 0 || !value || std::isnan(*value)) {
    throw UsageError("--set " + text + ": write NAME=NUMBER, as in --set N=5");
  }
  const std::string kept = kept_text(*value);
  if (to_number(kept) != value) {
    throw UsageError("--set " + text + ": six decimals are kept, which makes it " + kept);
  }
  return {to_upper(text.substr(0, mark)), *value};
}

std::vector<Setting> parse_settings(const std::vector<std::string>& texts) {
  std::vector<Setting> settings;
  for (const std::string& text : texts) {
    Setting setting = parse_setting(text);
    if (std::ranges::find(settings, setting.name, &Setting::name) != settings.end()) {
      throw UsageError("--set " + text + ": " + setting.name + " is set twice");
    }
    settings.push_back(std::move(setting));
  }
  return settings;
}

std::vector<std::pair<std::string, double>> parameters_of(
    const std::string& path, const std::vector<std::string>& settings) {
  std::vector<std::pair<std::string, double>> parameters;
  if (!path.empty()) {
    const std::string text = read_array(path, R"([{"PARAM_NAME":"N","DEFAULT":5}, ...])");
    parameters = parameters_in(text);
  }
  for (Setting& setting : parse_settings(settings)) {
    std::erase_if(parameters, [&](const auto& other) { return other.first == setting.name; });
    parameters.emplace_back(std::move(setting.name), setting.value);
  }
  return parameters;
}

std::vector<std::string> faults_of_settings(const std::vector<std::string>& settings,
                                            std::string_view script) {
  std::vector<std::string> texts;
  for (const std::string& text : settings) {
    for (const auto& fault : quor_advice::parameter_faults(script, {parse_setting(text).name})) {
      texts.push_back("--set " + text + ": " + fault.finding.sentence);
    }
  }
  return texts;
}

}  // namespace quor_host
