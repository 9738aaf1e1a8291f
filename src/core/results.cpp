#include "core/results.h"

#include <algorithm>
#include <limits>
#include <new>

#include "text/numbers.h"

namespace quor {

Window reading_window(const DataTable& table, uint32_t column_id, uint32_t last_row,
                      int32_t count) {
  const bool whole_column = count == std::numeric_limits<int32_t>::min();
  if (count < 0 && !whole_column) return {};
  return table.column_window(column_id, static_cast<int32_t>(last_row), count);
}

std::string window_text(const Window& window) {
  // The shortest entry is five bytes with its comma; a text must fit a 32-bit length.
  constexpr size_t shortest_entry = 5;
  if (window.size() > std::numeric_limits<uint32_t>::max() / shortest_entry) throw std::bad_alloc();
  std::string text = "{\"count\":";
  text.reserve(32 + window.size() * 12);
  append_integer(text, static_cast<int64_t>(window.size()));
  text += ",\"data\":[";
  for (size_t i = 0; i < window.size(); ++i) {
    if (i > 0) text += ',';
    const double value = window[i];
    if (is_null(value)) {
      text += "null";
    } else {
      append_fixed(text, value);
    }
  }
  text += "]}";
  return text;
}

std::string invoked_functions_text(const DataPoolCenter& pool) {
  std::string text = "[";
  for (const std::string& word : pool.script.invoked_functions) {
    if (text.size() > 1) text += ',';
    text += '"';
    text += word;
    text += '"';
  }
  text += ']';
  return text;
}

int32_t field_id_of_name(const DataPoolCenter& pool, std::string_view name) {
  if (name.empty()) return -1;
  const auto found = std::ranges::find(pool.script.variable_list, name, &Variable::text);
  return found == pool.script.variable_list.end() ? -1 : static_cast<int32_t>((*found)->column_id);
}

}  // namespace quor
