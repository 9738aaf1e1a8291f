#include "json_files.h"

#include <simdjson.h>

#include "../errors.h"
#include "../text.h"
#include "encoding.h"

namespace quor_host {
namespace {

namespace dom = simdjson::dom;

constexpr std::string_view calendar_keys[] = {"timezone", "trade_dates", "daylight_save_times",
                                              "trade_times", "special_trade_times"};

}  // namespace

std::string read_array(const std::string& path, std::string_view form) {
  std::string text = read_text(path);
  dom::parser parser;
  dom::array list;
  if (parser.parse(text).get(list) != simdjson::SUCCESS) {
    throw HostError(path + ": not of the form " + std::string(form));
  }
  return text;
}

bool is_json(const std::string& text) {
  dom::parser parser;
  return parser.parse(text).error() == simdjson::SUCCESS;
}

std::vector<std::string> names_of_settings(const std::string& json) {
  dom::parser parser;
  dom::array list;
  std::vector<std::string> names;
  if (parser.parse(json).get(list) != simdjson::SUCCESS) return names;
  for (const dom::element entry : list) {
    std::string_view name;
    const bool has_name = entry.at_key_case_insensitive("LINE_NAME").get(name) == simdjson::SUCCESS;
    if (has_name) names.emplace_back(name);
  }
  return names;
}

std::vector<std::pair<std::string, double>> parameters_in(const std::string& json) {
  dom::parser parser;
  dom::array list;
  std::vector<std::pair<std::string, double>> parameters;
  if (parser.parse(json).get(list) != simdjson::SUCCESS) return parameters;
  for (const dom::element entry : list) {
    std::string_view name;
    double value = 0.0;
    if (entry.at_key_case_insensitive("PARAM_NAME").get(name) != simdjson::SUCCESS) continue;
    if (entry.at_key_case_insensitive("DEFAULT").get(value) != simdjson::SUCCESS) continue;
    const std::string upper = to_upper(name);
    std::erase_if(parameters, [&](const auto& other) { return other.first == upper; });
    parameters.emplace_back(upper, value);
  }
  return parameters;
}

std::string read_calendar(const std::string& path) {
  std::string text = read_text(path);
  dom::parser parser;
  dom::object root;
  if (parser.parse(text).get(root) != simdjson::SUCCESS) {
    throw HostError(path + ": is no calendar, which is an object in JSON");
  }
  int64_t status = 0;
  dom::object data;
  if (root["status_code"].get(status) != simdjson::SUCCESS || status != 0 ||
      root["data"].get(data) != simdjson::SUCCESS) {
    throw HostError(path + ": is no calendar: it needs \"status_code\":0 and \"data\"");
  }
  for (const std::string_view key : calendar_keys) {
    if (data[key].error() != simdjson::SUCCESS) {
      throw HostError(path + ": is no calendar: \"data\" lacks \"" + std::string(key) + '"');
    }
  }
  return text;
}

}  // namespace quor_host
