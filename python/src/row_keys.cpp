#include "row_keys.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <stdexcept>
#include <string>

namespace quor_python {
namespace {

constexpr int64_t day_seconds = 86400;

[[noreturn]] void refuse(size_t bar, const char* what) {
  throw std::invalid_argument("bar " + std::to_string(bar) + " (the first is 0) " + what);
}

/// hhmmss of a part of a day.
template <int64_t ticks>
int64_t clock_of(int64_t part) {
  if (part == 0) return 0;
  const int64_t second = part / ticks;
  return second / 3600 * 10000 + second / 60 % 60 * 100 + second % 60;
}

/// The month of the day that was asked for last: those that follow are mostly in it.
class MonthOfDays {
 public:
  bool has(int64_t day) const { return static_cast<uint64_t>(day - first_) < days_; }

  void move_to(int64_t day) {
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{static_cast<int32_t>(day)}}};
    const std::chrono::year_month_day_last end{date.year() / date.month() / std::chrono::last};
    first_ = day - unsigned{date.day()} + 1;
    days_ = unsigned{end.day()};
    key_ = int64_t{int{date.year()}} * 100 + unsigned{date.month()};
  }

  /// YYYYMMDD000000
  int64_t key_of(int64_t day) const { return (key_ * 100 + (day - first_ + 1)) * 1000000; }

 private:
  int64_t first_ = 0;  ///< day since 1970
  uint64_t days_ = 0;
  int64_t key_ = 0;  ///< YYYYMM
};

/// Divisions by a number that the compiler knows are cheap.
template <int64_t ticks>
void fill(std::span<const int64_t> times, std::vector<int64_t>& keys) {
  constexpr int64_t first_day = -719162;  // 0001-01-01
  constexpr int64_t last_day = 2932896;   // 9999-12-31
  constexpr int64_t ticks_of_day = ticks * day_seconds;
  MonthOfDays month;
  for (size_t bar = 0; bar < times.size(); ++bar) {
    const int64_t time = times[bar];
    if (time == no_time) refuse(bar, "has no time");
    // The day begins at or before the time, also before 1970.
    const int64_t day = time / ticks_of_day - (time % ticks_of_day < 0 ? 1 : 0);
    if (!month.has(day)) {
      if (day < first_day || day > last_day) refuse(bar, "has a year out of range");
      month.move_to(day);
    }
    keys[bar] = month.key_of(day) + clock_of<ticks>(time - day * ticks_of_day);
  }
}

struct Unit {
  int64_t ticks;
  void (*fill)(std::span<const int64_t>, std::vector<int64_t>&);
};

constexpr Unit units[] = {
    {1, fill<1>}, {1000, fill<1000>}, {1000000, fill<1000000>}, {1000000000, fill<1000000000>}};

}  // namespace

void fill_keys(std::span<const int64_t> times, int64_t ticks, std::vector<int64_t>& keys) {
  const auto* const unit = std::ranges::find(units, ticks, &Unit::ticks);
  if (unit == std::end(units)) throw std::invalid_argument("no such unit of time");
  keys.resize(times.size());
  unit->fill(times, keys);
}

int64_t seconds_of_key(int64_t key) {
  const auto part = [key](int64_t unit) { return static_cast<unsigned>(key / unit % 100); };
  const std::chrono::sys_days day{std::chrono::year{static_cast<int>(key / 10000000000)} /
                                  std::chrono::month{part(100000000)} /
                                  std::chrono::day{part(1000000)}};
  return int64_t{day.time_since_epoch().count()} * day_seconds + part(10000) * 3600 +
         part(100) * 60 + part(1);
}

std::vector<int64_t> seconds_of_keys(std::span<const int64_t> keys) {
  std::vector<int64_t> seconds(keys.size());
  std::ranges::transform(keys, seconds.begin(), seconds_of_key);
  return seconds;
}

}  // namespace quor_python
