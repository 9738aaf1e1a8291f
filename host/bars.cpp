#include "bars.h"

#include <utility>

#include "text.h"

namespace quor_host {

Bars read_bars(const std::string& path) {
  return quor_bars::parse_bars(read_input(path), input_name(path));
}

std::string rows_json(const Bars& bars, const std::vector<uint32_t>& fields) {
  std::vector<std::pair<std::string, const std::vector<double>*>> columns;
  for (const uint32_t id : fields) {
    const auto column = bars.columns.find(id);
    if (column == bars.columns.end()) continue;
    columns.emplace_back(",\"" + std::to_string(id) + "\":", &column->second);
  }
  std::string json = "[";
  for (size_t row = 0; row < bars.keys.size(); ++row) {
    if (row > 0) json += ',';
    json += "{\"1\":" + std::to_string(bars.keys[row]);
    for (const auto& [key, values] : columns) json += key + json_number((*values)[row]);
    json += '}';
  }
  json += ']';
  return json;
}

}  // namespace quor_host
