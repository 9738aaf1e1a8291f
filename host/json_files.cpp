#include "json_files.h"

#include <simdjson.h>

#include "encoding.h"
#include "errors.h"

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
