#include "parameters.h"

#include <simdjson.h>

#include <algorithm>
#include <cmath>

#include "errors.h"
#include "text.h"

namespace quor_host {
namespace {

namespace dom = simdjson::dom;

/// The text of the file up to the bracket that closes its array.
std::string open_array(const std::string& path) {
  if (path.empty()) return "[";
  const std::string text = read_file(path);
  dom::parser parser;
  dom::array list;
  if (parser.parse(text).get(list) != simdjson::SUCCESS) {
    throw HostError(path + ": not of the form [{\"PARAM_NAME\":\"N\",\"DEFAULT\":5}, ...]");
  }
  std::string open = text.substr(0, text.rfind(']'));
  if (list.size() > 0) open += ',';
  return open;
}

}  // namespace

Setting parse_setting(const std::string& text) {
  const size_t mark = text.find('=');
  const auto value = mark == std::string::npos ? std::nullopt : to_number(text.substr(mark + 1));
  if (mark == 0 || !value || std::isnan(*value)) {
    throw HostError("--set " + text + ": write NAME=NUMBER, as in --set N=5");
  }
  return {to_upper(text.substr(0, mark)), *value};
}

std::string parameters_json(const std::string& path, const std::vector<std::string>& settings) {
  std::string json = open_array(path);
  for (const std::string& text : settings) {
    const Setting setting = parse_setting(text);
    json += "{\"PARAM_NAME\":" + json_string(setting.name) +
            ",\"DEFAULT\":" + json_number(setting.value) + "},";
  }
  if (json.ends_with(',')) json.pop_back();
  return json == "[" ? std::string() : json + ']';
}

std::string idle_reason(const std::string& name, const quor_advice::ScriptNames& names) {
  if (std::ranges::find(names.constants, name) != names.constants.end()) {
    return "the script's own CONST " + name + " stands";
  }
  const bool is_read = std::ranges::find(names.words, name) != names.words.end();
  return is_read ? "" : "the script doesn't read " + name;
}

std::vector<std::string> idle_settings(const std::vector<std::string>& settings,
                                       const quor_advice::ScriptNames& names) {
  std::vector<std::string> texts;
  for (const std::string& text : settings) {
    const std::string reason = idle_reason(parse_setting(text).name, names);
    if (!reason.empty()) texts.push_back("--set " + text + ": " + reason);
  }
  return texts;
}

}  // namespace quor_host
