// Dates as texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quor_bars {

/// The row key, YYYYMMDDhhmmss, of "2000-01-03", "2000-01-03 09:35",
/// "2000-01-03T09:35:00.000+08:00" or the same in digits. The clock time counts as it is written: a
/// zone doesn't move it, and a fraction of the second is dropped. Nothing for texts of other forms,
/// which may have day and month in any order, and for days that no calendar has.
std::optional<int64_t> parse_key(std::string_view text);

/// Why a text is no date, for a message: "no calendar has this day", or which forms are read.
std::string date_fault(std::string_view text);

/// "2000-01-03", or with the time of day "2000-01-03 09:35:00".
std::string key_text(int64_t key, bool with_time);

}  // namespace quor_bars
