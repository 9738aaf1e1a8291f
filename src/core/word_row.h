// The row of a word: all that sets it apart from the others. What a row doesn't say its class does.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "core/traits.h"

namespace quor {

class BaseFunc;

struct WordRow {
  std::string_view word;
  int32_t id;
  Traits traits;
  /// The bar fields that a call reads without naming them, in order.
  std::span<const std::string_view> required_fields;
  /// Whether the class works out whole columns.
  bool by_columns;
  std::unique_ptr<BaseFunc> (*make)(const WordRow& row);
};

/// Of words that read whole bars.
inline constexpr std::string_view bar_fields[] = {"HIGH", "LOW", "CLOSE", "OPEN"};

}  // namespace quor
