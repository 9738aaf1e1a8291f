// Which bars are named on the time axis.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace quor_host {

struct TimeMark {
  size_t row = 0;
  std::string text;
  bool begins_month = false;  ///< or a year; of intraday bars a day
  bool begins_year = false;
};

/// Marks for the bars from `first` on, by their row keys in ascending order. The first bars of
/// years come first, then those of months, weeks, days and times of day, as long as the marks are
/// at least `room` bars apart.
std::vector<TimeMark> time_marks(std::span<const int64_t> keys, size_t first, double room);

/// Whether the keys have times of day.
bool is_intraday(std::span<const int64_t> keys);

}  // namespace quor_host
