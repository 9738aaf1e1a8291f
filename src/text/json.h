// The members of JSON objects. No blanks, no escaping, numbers with six decimals.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quor {

/// Appends "Key":123 and the like; `more` appends a comma behind the value.
void append_json_integer(std::string& out, std::string_view key, int64_t value, bool more);
void append_json_text(std::string& out, std::string_view key, std::string_view value, bool more);
void append_json_float(std::string& out, std::string_view key, double value, bool more);

}  // namespace quor
