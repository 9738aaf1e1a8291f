#include "row_keys.h"

#include <chrono>
#include <limits>
#include <stdexcept>
#include <string>

namespace quor_python {
namespace {

constexpr int64_t day_seconds = 86400;
constexpr int64_t no_time = std::numeric_limits<int64_t>::min();

[[noreturn]] void refuse(size_t bar, const char* what) {
  throw std::invalid_argument("bar " + std::to_string(bar) + " (the first is 0) " + what);
}

/// hhmmss of a part of a day.
int64_t clock_of(int64_t part, int64_t ticks) {
  if (part == 0) return 0;
  const int64_t second = part / ticks;
  return second / 3600 * 10000 + second / 60 % 60 * 100 + second % 60;
}

/// YYYYMMDD000000 of a day since 1970.
int64_t key_of_day(int64_t day) {
  const std::chrono::year_month_day date{
      std::chrono::sys_days{std::chrono::days{static_cast<int32_t>(day)}}};
  return (int64_t{int{date.year()}} * 10000 + unsigned{date.month()} * 100 + unsigned{date.day()}) *
         1000000;
}

}  // namespace

void fill_keys(std::span<const int64_t> times, int64_t ticks, std::vector<int64_t>& keys) {
  constexpr int64_t first_day = -719162;  // 0001-01-01
  constexpr int64_t last_day = 2932896;   // 9999-12-31
  const int64_t ticks_of_day = ticks * day_seconds;
  keys.resize(times.size());
  int64_t known_day = no_time;
  int64_t known_key = 0;
  for (size_t bar = 0; bar < times.size(); ++bar) {
    const int64_t time = times[bar];
    if (time == no_time) refuse(bar, "has no time");
    // The day begins at or before the time, also before 1970.
    const int64_t day = time / ticks_of_day - (time % ticks_of_day < 0 ? 1 : 0);
    if (day < first_day || day > last_day) refuse(bar, "has a year out of range");
    if (day != known_day) {
      known_day = day;
      known_key = key_of_day(day);
    }
    keys[bar] = known_key + clock_of(time - day * ticks_of_day, ticks);
  }
}

pybind11::array_t<int64_t> seconds_of_keys(const pybind11::array_t<int64_t>& keys) {
  pybind11::array_t<int64_t> seconds(keys.size());
  for (pybind11::ssize_t i = 0; i < keys.size(); ++i) {
    const int64_t key = keys.at(i);
    const auto part = [key](int64_t unit) { return static_cast<unsigned>(key / unit % 100); };
    const std::chrono::sys_days day{std::chrono::year{static_cast<int>(key / 10000000000)} /
                                    std::chrono::month{part(100000000)} /
                                    std::chrono::day{part(1000000)}};
    seconds.mutable_at(i) = int64_t{day.time_since_epoch().count()} * day_seconds +
                            part(10000) * 3600 + part(100) * 60 + part(1);
  }
  return seconds;
}

}  // namespace quor_python
