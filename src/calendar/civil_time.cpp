#include "calendar/civil_time.h"

#include <algorithm>

#include "text/numbers.h"

namespace quor {
namespace {

constexpr int64_t seconds_per_day = 86400;
constexpr int64_t utc_plus_8 = 28800;

/// Some three million years either way, so that every year fits its field.
constexpr int64_t furthest_second = 100'000'000'000'000;

// Both ways count from 0000-03-01 in eras of 400 years, so that the leap day ends a year.
constexpr int64_t days_per_era = 146097;
constexpr int64_t days_to_1970 = 719468;

constexpr int64_t floor_divide(int64_t dividend, int64_t divisor) {
  return (dividend >= 0 ? dividend : dividend - divisor + 1) / divisor;
}

/// Days since 1970; a day beyond the end of its month counts on.
int64_t days_of(const BarTime& date) {
  const bool ends_year_before = date.month0 < 2;
  const int64_t year = date.year1900 + int64_t{1900} - (ends_year_before ? 1 : 0);
  const int64_t month_from_march = date.month0 + (ends_year_before ? 10 : -2);
  const int64_t era = floor_divide(year, 400);
  const int64_t year_of_era = year - era * 400;
  const int64_t day_of_year = (153 * month_from_march + 2) / 5 + date.day - 1;
  const int64_t day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * days_per_era + day_of_era - days_to_1970;
}

BarTime date_of(int64_t days) {
  days += days_to_1970;
  const int64_t era = floor_divide(days, days_per_era);
  const int64_t day_of_era = days - era * days_per_era;
  const int64_t year_of_era =
      (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const int64_t day_of_year =
      day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const int64_t month_from_march = (5 * day_of_year + 2) / 153;
  const bool ends_year_before = month_from_march >= 10;
  BarTime date;
  date.year1900 = static_cast<int32_t>(year_of_era + era * 400 + (ends_year_before ? 1 : 0) - 1900);
  date.month0 = static_cast<int32_t>(month_from_march + (ends_year_before ? -10 : 2));
  date.day = static_cast<int32_t>(day_of_year - (153 * month_from_march + 2) / 5 + 1);
  return date;
}

/// Seconds on the clock, as if it were in UTC.
int64_t clock_seconds(const BarTime& moment) {
  const int64_t minutes = int64_t{moment.hour} * 60 + moment.minute;
  return days_of(moment) * seconds_per_day + minutes * 60 + moment.second;
}

BarTime clock_moment(int64_t seconds) {
  seconds = std::clamp(seconds, -furthest_second, furthest_second);
  const int64_t days = floor_divide(seconds, seconds_per_day);
  const auto rest = static_cast<int32_t>(seconds - days * seconds_per_day);
  BarTime moment = date_of(days);
  moment.hour = rest / 3600;
  moment.minute = rest / 60 % 60;
  moment.second = rest % 60;
  return moment;
}

/// The digits at the start of a piece; a sign is none.
int32_t read_piece(std::string_view text, size_t position, size_t length) {
  const std::string_view piece = text.substr(position, length);
  return parse_integer(piece.substr(0, piece.find_first_not_of("0123456789")));
}

bool is_date(int64_t month, int64_t day) {
  return month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

bool is_time_of_day(int64_t hour, int64_t minute, int64_t second) {
  return hour < 24 && minute < 60 && second < 60;
}

}  // namespace

BarTime join(const BarTime& date, const BarTime& time_of_day) {
  return {date.year1900,    date.month0,        date.day,
          time_of_day.hour, time_of_day.minute, time_of_day.second};
}

BarTime local_moment(int64_t unix_seconds) {
  return clock_moment(std::clamp(unix_seconds, -furthest_second, furthest_second) + utc_plus_8);
}

BarTime shifted(const BarTime& moment, int64_t seconds) {
  return seconds == 0 ? moment : clock_moment(clock_seconds(moment) + seconds);
}

std::optional<BarTime> decode_row_key(int64_t key) {
  const int64_t year = key / 10000000000;
  const auto two_digits = [key](int64_t unit) { return static_cast<int32_t>(key / unit % 100); };
  const int32_t month = two_digits(100000000);
  const int32_t day = two_digits(1000000);
  const int32_t hour = two_digits(10000);
  const int32_t minute = two_digits(100);
  const int32_t second = two_digits(1);
  if (key < 0 || !is_date(month, day) || !is_time_of_day(hour, minute, second)) return {};
  return BarTime{static_cast<int32_t>(year - 1900), month - 1, day, hour, minute, second};
}

std::string date_text(const BarTime& moment) {
  std::string text;
  append_integer(text, moment.year1900 + int64_t{1900});
  for (const int32_t number : {moment.month0 + 1, moment.day}) {
    if (number < 10) text += '0';
    append_integer(text, number);
  }
  return text;
}

bool read_date(std::string_view text, BarTime& moment) {
  if (text.size() != 8) return false;
  const int32_t year = read_piece(text, 0, 4);
  const int32_t month = read_piece(text, 4, 2);
  const int32_t day = read_piece(text, 6, 2);
  if (year < 1900 || !is_date(month, day)) return false;
  moment.year1900 = year - 1900;
  moment.month0 = month - 1;
  moment.day = day;
  return true;
}

bool read_time_of_day(std::string_view text, BarTime& moment) {
  if (text.size() != 8) return false;
  const int32_t hour = read_piece(text, 0, 2);
  const int32_t minute = read_piece(text, 3, 2);
  const int32_t second = read_piece(text, 6, 2);
  if (!is_time_of_day(hour, minute, second)) return false;
  moment.hour = hour;
  moment.minute = minute;
  moment.second = second;
  return true;
}

int32_t parse_timezone(std::string_view text) {
  if (text.size() != 9) return 28800;
  const int32_t hours = leading_integer(text.substr(4, 2));
  const int32_t minutes = leading_integer(text.substr(7, 2));
  return (text[3] == '+' ? 1 : -1) * (hours * 60 + minutes) * 60;
}

}  // namespace quor
