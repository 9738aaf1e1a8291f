#include "time_marks.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace quor_host {
namespace {

struct Moment {
  int64_t year;
  int64_t month;
  int64_t day;
  int64_t minute;  ///< of the day

  explicit Moment(int64_t key)
      : year(key / 10000000000),
        month(key / 100000000 % 100),
        day(key / 1000000 % 100),
        minute(key / 10000 % 100 * 60 + key / 100 % 100) {}
  int64_t months() const { return year * 12 + month - 1; }
  int64_t days() const {
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    return std::chrono::sys_days(date).time_since_epoch().count();
  }
};

enum class Name { year, month, day, time };

/// A span of time whose first bar is marked. The number tells one span from the next.
struct Span {
  Name name;
  int64_t (*number)(const Moment&);
};

template <int years>
int64_t year_number(const Moment& at) {
  return at.year / years;
}
template <int months>
int64_t month_number(const Moment& at) {
  return at.months() / months;
}
int64_t week_number(const Moment& at) { return (at.days() + 3) / 7; }  // from Monday on
int64_t day_number(const Moment& at) { return at.days(); }
template <int minutes>
int64_t time_number(const Moment& at) {
  return at.days() * (24 * 60 / minutes) + at.minute / minutes;
}

constexpr Span spans[] = {
    {Name::year, year_number<100>}, {Name::year, year_number<10>},  {Name::year, year_number<5>},
    {Name::year, year_number<1>},   {Name::month, month_number<6>}, {Name::month, month_number<3>},
    {Name::month, month_number<1>}, {Name::day, week_number},       {Name::day, day_number},
    {Name::time, time_number<360>}, {Name::time, time_number<120>}, {Name::time, time_number<60>},
    {Name::time, time_number<30>},  {Name::time, time_number<15>},  {Name::time, time_number<5>},
    {Name::time, time_number<1>},
};

constexpr std::array months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string month_text(const Moment& at) {
  return months.at(static_cast<size_t>(std::clamp<int64_t>(at.month, 1, 12) - 1));
}

std::string time_text(const Moment& at) {
  const auto two_digits = [](int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  return two_digits(at.minute / 60) + ':' + two_digits(at.minute % 60);
}

TimeMark mark_of(size_t row, const Moment& at, Name name, bool intraday) {
  TimeMark mark{row, "", name == Name::month || name == Name::year, name == Name::year};
  if (name == Name::year) mark.text = std::to_string(at.year);
  if (name == Name::month) mark.text = month_text(at);
  if (name == Name::day) mark.text = std::to_string(at.day);
  if (name == Name::time) mark.text = time_text(at);
  if (intraday && (name == Name::day || name == Name::month)) {
    mark.text = month_text(at) + ' ' + std::to_string(at.day);
    mark.begins_month = true;
  }
  return mark;
}

/// Where a span begins among the moments, behind the first of them.
std::vector<size_t> beginnings(const std::vector<Moment>& moments, const Span& span) {
  std::vector<size_t> places;
  for (size_t i = 1; i < moments.size(); ++i) {
    if (span.number(moments[i]) != span.number(moments[i - 1])) places.push_back(i);
  }
  return places;
}

bool has_room(const std::vector<TimeMark>& marks, size_t row, double room) {
  return std::ranges::none_of(marks, [row, room](const TimeMark& mark) {
    return std::abs(static_cast<double>(mark.row) - static_cast<double>(row)) < room;
  });
}

}  // namespace

bool is_intraday(std::span<const int64_t> keys) {
  return std::ranges::any_of(keys, [](int64_t key) { return key % 1000000 != 0; });
}

std::vector<TimeMark> time_marks(std::span<const int64_t> keys, size_t first, double room) {
  const bool intraday = is_intraday(keys);
  const size_t before = first == 0 ? 0 : first - 1;  // which tells what begins at the first one
  const auto in_sight = keys.subspan(before);
  const std::vector<Moment> moments(in_sight.begin(), in_sight.end());
  const auto most = static_cast<size_t>(static_cast<double>(keys.size() - first) / room) + 1;
  std::vector<TimeMark> marks;
  for (const Span& span : spans) {
    const std::vector<size_t> places = beginnings(moments, span);
    if (places.size() > most) break;
    for (const size_t i : places) {
      if (!has_room(marks, before + i, room)) continue;
      marks.push_back(mark_of(before + i, moments[i], span.name, intraday));
    }
  }
  if (marks.empty()) {
    marks.push_back(mark_of(first, moments[first - before], Name::day, intraday));
  }
  std::ranges::sort(marks, {}, &TimeMark::row);
  return marks;
}

}  // namespace quor_host
