// Which words are data fields: the built-in ones and those that hosts declare.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tables/fields.h"

namespace quor {

/// The data id of a bar field's word, built in or declared by a host; nothing for any other word.
std::optional<int32_t> reserved_field_id(std::string_view word);

/// Adds a word to the reserved fields of the process. A word that is there keeps its id.
void declare_reserved_field(std::string_view word, int32_t id);

/// All reserved fields, the built-in ones first. The words stay valid for the life of the process.
std::vector<Field> reserved_fields();

/// The data id of a field of a realtime reference; nothing for any other word.
std::optional<int32_t> realtime_field_id(std::string_view word);

}  // namespace quor
