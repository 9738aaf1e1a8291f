// Periods: the host's code, the classes, and the unit words of a cross-period reference.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quor {

/// The period of an instance.
struct Period {
  int32_t value = 8;     ///< what PERIOD returns; -1 unknown, -2 no period
  int32_t multiple = 0;  ///< units per bar
  int32_t period_class = 0;
};

/// Decodes a host code into `period`; what the code doesn't tell keeps its value.
void decode_period(int32_t code, Period& period);

/// Whether a bar of the class is a day or longer, so that its key is its date.
constexpr bool is_long_period(int32_t period_class) {
  return period_class == 0 || (period_class >= 4 && period_class <= 7);
}

/// The class of a unit word such as MIN; nothing for an unknown unit.
std::optional<int32_t> period_unit_class(std::string_view unit);

/// Whether the unit allows the multiple, compared as text.
bool period_unit_allows(std::string_view unit, std::string_view multiple);

/// Orders the classes: a longer period has a greater rank. 0 for a class without a rank.
int32_t period_class_rank(int32_t period_class);

/// Whether the market word names a stock market.
bool is_stock_market(std::string_view market);

}  // namespace quor
