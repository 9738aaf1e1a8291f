// The bar fields by word and by the id under which the library asks for them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "src/tables/fields.h"

namespace quor_bars {

inline constexpr uint32_t field_time = quor::built_in_field_id("TIME");
inline constexpr uint32_t field_open = quor::built_in_field_id("OPEN");
inline constexpr uint32_t field_high = quor::built_in_field_id("HIGH");
inline constexpr uint32_t field_low = quor::built_in_field_id("LOW");
inline constexpr uint32_t field_close = quor::built_in_field_id("CLOSE");
inline constexpr uint32_t field_volume = quor::built_in_field_id("VOL");
inline constexpr uint32_t field_amount = quor::built_in_field_id("AMOUNT");

struct FieldWord {
  std::string_view word;  ///< in its plain form
  uint32_t id;
};

/// All words for columns of files; the first word of an id is the one that is shown.
std::span<const FieldWord> field_words();

/// The form in which names of columns are compared: in capitals, without blanks and underscores.
std::string plain_name(std::string_view header);

/// The id that a column header names: a field word in any form, or an id in decimal.
std::optional<uint32_t> field_id(std::string_view header);

/// "CLOSE (11)", or the number alone for a field without a word here.
std::string field_text(uint32_t id);

}  // namespace quor_bars
