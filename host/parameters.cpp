#include "parameters.h"

#include <simdjson.h>

#include <cmath>

#include "advice/advice.h"
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
