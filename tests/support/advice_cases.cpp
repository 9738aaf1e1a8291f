#include "support/advice_cases.h"

#include <cmath>
#include <fstream>
#include <optional>
#include <sstream>
#include <utility>

#include "support/test_host.h"

namespace quor_test {
namespace {

std::string unescaped(std::string_view line) {
  std::string text;
  for (size_t i = 0; i < line.size(); ++i) {
    const bool is_escape = line[i] == '\\' && i + 1 < line.size();
    const char kind = is_escape ? line[++i] : '\0';
    text += kind == 't' ? '\t' : kind == 'r' ? '\r' : kind == 'n' ? '\n' : line[i];
  }
  return text;
}

/// "N=5 M=-1" as the JSON that the library takes.
std::string parameters_json(std::istringstream& words) {
  std::string json;
  for (std::string word; words >> word;) {
    const size_t mark = word.find('=');
    json += (json.empty() ? "[" : ",");
    json += R"({"PARAM_NAME":")" + word.substr(0, mark) + R"(","DEFAULT":)" +
            word.substr(mark + 1) + '}';
  }
  return json + ']';
}

quor_advice::Supply supply(std::istringstream& words) {
  quor_advice::Supply supply{false, {}, "give a calendar", "give a number"};
  for (std::string word; words >> word;) {
    if (word == "calendar") {
      supply.has_calendar = true;
    } else {
      supply.constants.push_back(word);
    }
  }
  return supply;
}

void take_setting(AdviceCase& advice_case, const std::string& line) {
  std::istringstream words(line);
  std::string key;
  words >> key;
  if (key == "@params") {
    advice_case.parameters = parameters_json(words);
  } else if (key == "@period") {
    words >> std::hex >> advice_case.period;
  } else if (key == "@supply") {
    advice_case.supply = supply(words);
  } else if (key == "@run" || key == "@hours") {
    words >> advice_case.bars;
    advice_case.is_hourly = key == "@hours";
  } else {
    throw std::runtime_error("unknown setting " + key);
  }
}

void take_line(AdviceCase& advice_case, const std::string& line) {
  if (line.starts_with("@")) {
    take_setting(advice_case, line);
  } else if (line.starts_with("> ")) {
    advice_case.findings.push_back(line.substr(2));
  } else {
    if (!advice_case.script.empty()) advice_case.script += '\n';
    advice_case.script += unescaped(line);
  }
}

std::vector<int64_t> keys_of(const AdviceCase& advice_case) {
  std::vector<int64_t> keys;
  for (size_t i = 0; i < advice_case.bars; ++i) {
    const auto number = static_cast<int64_t>(i);
    // Eight hours a day, months of 28 days.
    const int64_t day = advice_case.is_hourly ? number / 8 : number;
    const int64_t date = 20240101 + day / 28 * 100 + day % 28;
    keys.push_back(date * 1000000 + (advice_case.is_hourly ? 90000 + number % 8 * 10000 : 0));
  }
  return keys;
}

/// Prices around 10 that rise and fall.
Bars prices(size_t count) {
  Bars bars;
  for (size_t i = 0; i < count; ++i) {
    const double wave = static_cast<double>(i % 7) - 3.0;
    bars["O"].push_back(10.0);
    bars["C"].push_back(10.0 + wave);
    bars["H"].push_back(14.0);
    bars["L"].push_back(6.0);
  }
  return bars;
}

bool is_null_everywhere(const TestHost& host, const std::string& line) {
  for (const double value : host.line(line)) {
    if (!std::isnan(value)) return false;
  }
  return true;
}

}  // namespace

std::string report_of(const TestHost& host, std::string_view script, std::string_view parameters) {
  uint32_t length = 0;
  char* const buffer = get_pre_parse_res(host.handle(), script.empty() ? "" : script.data(),
                                         parameters.empty() ? "" : parameters.data(), "",
                                         static_cast<uint32_t>(script.size()),
                                         static_cast<uint32_t>(parameters.size()), 0, &length);
  std::string report(buffer, length);
  release_ptr_val(buffer);
  return report;
}

void PrintTo(const AdviceCase& advice_case, std::ostream* out) {
  *out << advice_case.group << '\n' << advice_case.script;
}

std::vector<AdviceCase> load_advice_cases(const std::string& path) {
  std::vector<AdviceCase> cases;
  AdviceCase group;
  enum { nothing, header, block } place = nothing;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("== ")) {
      group = {};
      group.group = line.substr(3);
      place = header;
    } else if (line.empty() || line.starts_with("# ")) {
      place = nothing;
    } else if (place == header) {
      take_setting(group, line);
    } else {
      if (std::exchange(place, block) == nothing) cases.push_back(group);
      take_line(cases.back(), line);
    }
  }
  return cases;
}

std::vector<quor_advice::Finding> findings_of(const AdviceCase& advice_case) {
  TestHost host;
  host.set_info(advice_case.period, "600000", "TEST");
  const std::string report = report_of(host, advice_case.script, advice_case.parameters);
  std::vector<int64_t> keys;
  std::string answer;
  quor_advice::Input input{.script = advice_case.script,
                           .parameters = advice_case.parameters,
                           .report = report,
                           .answer = {},
                           .period = static_cast<int32_t>(advice_case.period),
                           .run = {},
                           .supply = advice_case.supply,
                           .compile = {}};
  input.compile = [&advice_case](std::string_view script) {
    TestHost other;
    other.set_info(advice_case.period, "600000", "TEST");
    return report_of(other, script, advice_case.parameters);
  };
  if (advice_case.bars > 0) {
    keys = keys_of(advice_case);
    input.run.emplace();
    input.run->keys = keys;
    host.set_keys(keys);
    host.feed(prices(advice_case.bars));
    answer = host.run();
    input.answer = answer;
    input.run->missing_fields = {13};  // no volume
    for (const std::string& line : quor_advice::names_in(advice_case.script).lines) {
      if (is_null_everywhere(host, line)) input.run->null_lines.push_back(line);
    }
  }
  return quor_advice::advise(input);
}

std::string text_of(const quor_advice::Finding& finding) {
  std::string text = "-";
  if (finding.line > 0) {
    text = std::to_string(finding.line) + ':' + std::to_string(finding.column) + '-' +
           std::to_string(finding.column + finding.length - 1);
  }
  const bool is_error = finding.severity == quor_advice::Severity::error;
  text += is_error ? " error " + std::to_string(finding.code) : " warning";
  text += ": " + finding.sentence;
  return finding.suggestion.empty() ? text : text + "; " + finding.suggestion;
}

std::string findings_text(std::string_view script, std::string_view parameters) {
  AdviceCase advice_case;
  advice_case.script = script;
  advice_case.parameters = parameters;
  std::string text;
  for (const auto& finding : findings_of(advice_case)) text += text_of(finding) + '\n';
  return text;
}

}  // namespace quor_test
