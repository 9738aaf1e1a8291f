// The wall clock and the machine's local time.
#pragma once

#include <cstdint>

namespace quor {

struct LocalTime {
  int year;   ///< full year
  int month;  ///< 1 to 12
  int day;
  int hour;
  int minute;
  int second;
};

/// Seconds since 1970.
int64_t unix_time();

/// The wall clock in the machine's time zone; all zero where the machine can't tell.
LocalTime local_time();

}  // namespace quor
