#include "parameters.h"

#include <simdjson.h>

#include "letters.h"

namespace quor_advice {

std::map<std::string, double, std::less<>> read_parameters(std::string_view json) {
  std::map<std::string, double, std::less<>> parameters;
  simdjson::dom::parser parser;
  simdjson::dom::array list;
  // Keys and names count in capitals whatever the host wrote.
  if (parser.parse(simdjson::padded_string(to_upper(json))).get(list) != simdjson::SUCCESS) {
    return parameters;
  }
  for (const simdjson::dom::element entry : list) {
    std::string_view name;
    double value = 0.0;
    if (entry["PARAM_NAME"].get(name) != simdjson::SUCCESS) continue;
    if (entry["DEFAULT"].get(value) != simdjson::SUCCESS) continue;
    parameters.insert_or_assign(std::string(name), value);
  }
  return parameters;
}

}  // namespace quor_advice
