// Dates and times of day by arithmetic alone: a host in UTC+8, wherever the machine stands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace quor {

/// A broken-down moment. Blank, it is all zero. In a record that holds only a date or only a time
/// of day, the other three fields are zero.
struct BarTime {
  int32_t year1900 = 0;  ///< years since 1900
  int32_t month0 = 0;    ///< 0 to 11
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;

  /// The fields in the order in which moments are compared.
  auto fields() const { return std::tie(year1900, month0, day, hour, minute, second); }
};

inline bool operator<(const BarTime& a, const BarTime& b) { return a.fields() < b.fields(); }
inline bool operator==(const BarTime& a, const BarTime& b) { return a.fields() == b.fields(); }

/// Strictly between the two.
inline bool is_inside(const BarTime& moment, const BarTime& start, const BarTime& end) {
  return start < moment && moment < end;
}

/// The date of the one with the time of day of the other.
BarTime join(const BarTime& date, const BarTime& time_of_day);

/// What a clock in UTC+8 shows at a number of seconds since 1970.
BarTime local_moment(int64_t unix_seconds);

/// The moment some seconds later; a day beyond its month's end is carried over. No seconds change
/// nothing, not even such a day.
BarTime shifted(const BarTime& moment, int64_t seconds);

/// The moment that a row key spells, YYYYMMDDhhmmss; nothing for a key with a field out of range.
std::optional<BarTime> decode_row_key(int64_t key);

/// Year, month and day without separators.
std::string date_text(const BarTime& moment);

/// Reads YYYYMMDD into year, month and day. False leaves the moment as it was: the text has another
/// length, or the year is below 1900, or month or day is out of range. Throws std::invalid_argument
/// for a piece that doesn't begin with a digit.
bool read_date(std::string_view text, BarTime& moment);

/// Reads hh:mm:ss into the time of day, with any separators; answers as `read_date`.
bool read_time_of_day(std::string_view text, BarTime& moment);

/// The offset of a text such as "UTC+08:00" in seconds; 28800 unless it has nine characters.
int32_t parse_timezone(std::string_view text);

}  // namespace quor
