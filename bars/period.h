// The period of bars: by name, by the library's code, or from the distances of their keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_bars {

inline constexpr uint32_t period_of_a_day = 0x4000;
inline constexpr int64_t one_day = 86400;  ///< in seconds

/// The code of "5min", "15s", "2hour", "day", "week", "month", "quarter", "year", of the same in
/// other usual spellings, or of a code such as "0x3005" itself.
std::optional<uint32_t> parse_period(std::string_view text);

/// "5min", "day" and so on; the code in hexadecimal if it has no name.
std::string period_text(uint32_t code);

/// The period that most of the distances between neighbouring bars stand for, whatever their order
/// in the list; nothing for fewer than two bars and for distances of no known period.
std::optional<uint32_t> infer_period(std::vector<int64_t> keys);

/// A row key as seconds since 1970, on the clock of the bars.
int64_t seconds_of(int64_t key);

/// The first second behind the period in which a moment lies: behind the day, the week from Monday
/// on, the month or the year of the calendar, and for a period within the day so long behind the
/// moment itself.
int64_t end_of_period(int64_t seconds, uint32_t code);

}  // namespace quor_bars
