// The bar fields by word and by the id under which the library asks for them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quor_host {

inline constexpr uint32_t field_time = 1;
inline constexpr uint32_t field_open = 7;
inline constexpr uint32_t field_high = 8;
inline constexpr uint32_t field_low = 9;
inline constexpr uint32_t field_close = 11;
inline constexpr uint32_t field_volume = 13;
inline constexpr uint32_t field_amount = 19;

/// Fields that a script is said to read and that no file of bars has: the row key, and the time of
/// a notice, for which the library takes its own.
constexpr bool is_given_elsewhere(uint32_t id) {
  constexpr uint32_t field_notice_time = 199;
  return id == field_time || id == field_notice_time;
}

/// The id that a column header names: a field word in any case, or an id in decimal.
std::optional<uint32_t> field_id(std::string_view header);

/// "CLOSE (11)", or the number alone for a field without a word here.
std::string field_text(uint32_t id);

}  // namespace quor_host
