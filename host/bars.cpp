#include "bars.h"

#include <iostream>
#include <utility>

#include "bars/fields.h"
#include "errors.h"
#include "text.h"

namespace quor_host {

namespace {

/// "close=Adj Close" for each field that stands under another name.
quor_bars::Naming naming_of(const std::vector<std::string>& columns) {
  quor_bars::Naming naming;
  for (const std::string& column : columns) {
    const size_t mark = column.find('=');
    const std::string field = column.substr(0, mark);
    const auto id = quor_bars::field_id(field);
    if (mark == std::string::npos || mark == 0 || mark + 1 == column.size()) {
      throw HostError("--column " + column + ": write FIELD=COLUMN, such as close=\"Adj Close\"");
    }
    if (!id) {
      throw HostError("--column " + column + ": no field is called " + field +
                      "; fields are date, open, high, low, close, volume, amount");
    }
    if (*id == quor_bars::field_time) {
      naming.time = column.substr(mark + 1);
    } else {
      naming.fields[*id] = column.substr(mark + 1);
    }
  }
  return naming;
}

}  // namespace

Bars read_bars(const std::string& path, const std::vector<std::string>& columns) {
  Bars bars = quor_bars::parse_bars(read_input(path), input_name(path), naming_of(columns));
  for (const std::string& doubt : bars.doubts) std::cerr << "quor: warning: " << doubt << '\n';
  return bars;
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
