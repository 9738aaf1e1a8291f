// Vectors as what the face for C++ takes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "engine/values.h"
#include "support/vectors.h"
#include "tables/field_table.h"

namespace quor_test {

/// Bars as arrays, in the order of the intake.
struct Arrays {
  std::vector<int64_t> keys;
  std::map<uint32_t, Series> fields;

  std::vector<quor::engine::Field> spans() const {
    std::vector<quor::engine::Field> spans;
    for (const auto& [id, values] : fields) spans.push_back({id, values});
    return spans;
  }
};

inline quor::engine::Settings settings_of(const Vector& vector) {
  quor::engine::Settings settings;
  settings.subject.period = vector.period;
  settings.subject.security = vector.security;
  settings.subject.market = vector.market;
  settings.parameters = vector.defaults;
  return settings;
}

/// The column of a field that a vector names by its word or its id.
inline uint32_t column_of(const std::string& field) {
  const auto id = quor::reserved_field_id(field);
  return id ? static_cast<uint32_t>(*id) : static_cast<uint32_t>(std::stoul(field));
}

inline Arrays arrays_of(const Vector& vector) {
  Arrays bars;
  size_t rows = 0;
  for (const auto& [field, values] : vector.bars) rows = std::max(rows, values.size());
  for (size_t row = 0; row < rows; ++row) bars.keys.push_back(row_key(vector.keys, row));
  for (const auto& [field, values] : vector.bars) {
    Series& column = bars.fields[column_of(field)] = values;
    column.resize(rows, null);
  }
  return bars;
}

}  // namespace quor_test
