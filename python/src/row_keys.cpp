#include "row_keys.h"

#include <chrono>
#include <limits>
#include <stdexcept>
#include <string>

namespace quor_python {
namespace {

constexpr int64_t day_seconds = 86400;
constexpr int64_t no_time = std::numeric_limits<int64_t>::min();

struct Division {
  int64_t quotient;
  int64_t remainder;  ///< never negative
};

constexpr Division floor_divide(int64_t value, int64_t by) {
  const int64_t remainder = (value % by + by) % by;
  return {(value - remainder) / by, remainder};
}

[[noreturn]] void refuse(size_t bar, const char* what) {
  throw std::invalid_argument("bar " + std::to_string(bar) + " (the first is 0) " + what);
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
  keys.resize(times.size());
  int64_t known_day = no_time;
  int64_t known_key = 0;
  for (size_t bar = 0; bar < times.size(); ++bar) {
    if (times[bar] == no_time) refuse(bar, "has no time");
    const Division day = floor_divide(floor_divide(times[bar], ticks).quotient, day_seconds);
    if (day.quotient < first_day || day.quotient > last_day) refuse(bar, "has a year out of range");
    if (day.quotient != known_day) {
      known_day = day.quotient;
      known_key = key_of_day(known_day);
    }
    const int64_t second = day.remainder;
    keys[bar] = known_key + second / 3600 * 10000 + second / 60 % 60 * 100 + second % 60;
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
