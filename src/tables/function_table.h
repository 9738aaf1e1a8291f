// Every built-in function word with its id and the settings of its calls.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quor {

struct FunctionRow {
  std::string_view word;
  int32_t id;
};

/// The 214 words of the language. Ids run from 0 to 213; none is 24, and two words share 167.
std::span<const FunctionRow> FunctionIdTable();

/// The id of a word, nothing for a text that is no function word.
std::optional<int32_t> function_id(std::string_view word);

/// Whether the compiler gives every call of the word a data column of its own.
bool uses_result_column(std::string_view word);

/// The bar fields that a call of the word reads without naming them, in order.
std::span<const std::string_view> required_fields(std::string_view word);

}  // namespace quor
