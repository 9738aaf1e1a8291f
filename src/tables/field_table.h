// The words of data fields and the ids under which the host delivers them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor {

struct Field {
  std::string_view word;
  int32_t id;
};

/// A column id that names no column.
inline constexpr uint32_t no_column = 0xFFFFFFFF;

/// The id of the column that holds the row key.
inline constexpr uint32_t time_column_id = 1;

inline constexpr uint32_t open_column_id = 7;
inline constexpr uint32_t high_column_id = 8;
inline constexpr uint32_t low_column_id = 9;
inline constexpr uint32_t close_column_id = 11;
inline constexpr uint32_t volume_column_id = 13;
inline constexpr uint32_t amount_column_id = 19;

/// The data id of a bar field's word, built in or declared by a host; nothing for any other word.
std::optional<int32_t> reserved_field_id(std::string_view word);

/// Adds a word to the reserved fields of the process. A word that is there keeps its id.
void declare_reserved_field(std::string_view word, int32_t id);

/// All reserved fields, the built-in ones first. The words stay valid for the life of the process.
std::vector<Field> reserved_fields();

/// The data id of a field of a realtime reference; nothing for any other word.
std::optional<int32_t> realtime_field_id(std::string_view word);

}  // namespace quor
