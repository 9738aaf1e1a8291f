#include "period.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <iterator>
#include <map>

#include "text.h"

namespace quor_bars {
namespace {

/// A unit of time with the code of one, and how the codes of several go on from a base.
struct Unit {
  std::string_view name;   ///< the name that is shown
  std::string_view names;  ///< all of them, in capitals, between blanks
  uint32_t one;
  uint32_t base = 0;  ///< 0: only one of them is a period
  uint32_t factor = 1;
  uint32_t most = 1;
};

constexpr Unit units[] = {
    {"s", " S SEC SECOND SECONDS ", 0x3101, 0x3100, 1, 255},
    {"min", " M MIN MINUTE MINUTES ", 0x3000, 0x3000, 1, 256},
    {"hour", " H HOUR HOURS HOURLY ", 0x303C, 0x3000, 60, 4},
    {"day", " D DAY DAYS DAILY ", period_of_a_day},
    {"week", " W WEEK WEEKS WEEKLY ", 0x5000},
    {"month", " MO MON MONTH MONTHS MONTHLY ", 0x6000},
    {"quarter", " Q QUARTER QUARTERS QUARTERLY ", 0x6003},
    {"year", " Y YEAR YEARS YEARLY ", 0x7000},
};

uint32_t code_of(const Unit& unit, uint32_t count) {
  return count == 1 ? unit.one : unit.base + count * unit.factor;
}

std::optional<uint32_t> whole_number(std::string_view text, int base) {
  uint32_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<uint32_t> parse_code(std::string_view text) {
  const bool is_hexadecimal = text.starts_with("0X");
  const auto code = is_hexadecimal ? whole_number(text.substr(2), 16) : whole_number(text, 10);
  constexpr uint32_t first_code =
      0x3000;  // a class in the highest of four digits, a multiple below
  constexpr uint32_t end_of_codes = 0x8000;
  constexpr uint32_t most_units = 0x1FF;
  const bool is_known =
      code && *code >= first_code && *code < end_of_codes && (*code & 0xFFFU) <= most_units;
  return is_known ? code : std::nullopt;
}

/// The digits in front of or behind the letters, and the letters.
struct CountedUnit {
  std::string_view count;
  std::string_view unit;
};

CountedUnit take_apart(std::string_view text) {
  constexpr std::string_view digits = "0123456789";
  const size_t letters = std::min(text.find_first_not_of(digits), text.size());
  if (letters > 0) return {text.substr(0, letters), text.substr(letters)};
  const size_t behind = std::min(text.find_first_of(digits), text.size());
  return {text.substr(behind), text.substr(0, behind)};
}

/// Distances in seconds that a period makes between bars: holidays stretch them, and months differ.
struct Distances {
  int64_t least;
  int64_t most;
  uint32_t code;
};

constexpr Distances long_distances[] = {
    {one_day, 5 * one_day, period_of_a_day}, {6 * one_day, 12 * one_day, 0x5000},
    {25 * one_day, 40 * one_day, 0x6000},    {80 * one_day, 100 * one_day, 0x6003},
    {350 * one_day, 380 * one_day, 0x7000},
};

std::optional<uint32_t> period_of_distance(int64_t seconds) {
  if (seconds < 1) return std::nullopt;
  if (seconds < 60) return code_of(units[0], static_cast<uint32_t>(seconds));
  if (seconds <= int64_t{units[1].most} * 60 && seconds % 60 == 0) {
    return code_of(units[1], static_cast<uint32_t>(seconds / 60));
  }
  const auto* const row = std::ranges::find_if(long_distances, [seconds](const Distances& range) {
    return seconds >= range.least && seconds <= range.most;
  });
  if (row == std::end(long_distances)) return std::nullopt;
  return row->code;
}

}  // namespace

std::optional<uint32_t> parse_period(std::string_view text) {
  const std::string upper = to_upper(text);
  if (const auto code = parse_code(upper)) return code;
  const auto [digits, letters] = take_apart(upper);
  const std::string name = ' ' + std::string(letters) + ' ';
  const auto has_name = [&name](const Unit& unit) {
    return unit.names.find(name) != std::string_view::npos;
  };
  const auto* const unit = std::ranges::find_if(units, has_name);
  if (letters.empty() || unit == std::end(units)) return std::nullopt;
  const auto count = digits.empty() ? std::optional(1U) : whole_number(digits, 10);
  if (!count || *count < 1 || *count > unit->most) return std::nullopt;
  return code_of(*unit, *count);
}

std::string period_text(uint32_t code) {
  for (const Unit& unit : units) {
    if (unit.base == 0 && code == unit.one) return std::string(unit.name);
    const bool is_several = code > unit.base + 1 && code <= unit.base + unit.most;
    if (unit.base != 0 && (code == unit.one || is_several)) {
      return std::to_string(is_several ? code - unit.base : 1) + std::string(unit.name);
    }
  }
  std::array<char, 8> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), code, 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

int64_t seconds_of(int64_t key) {
  const auto part = [key](int64_t unit) { return key / unit % 100; };
  const std::chrono::year_month_day first{
      std::chrono::year(static_cast<int>(key / 10000000000)),
      std::chrono::month(static_cast<unsigned>(part(100000000))), std::chrono::day(1)};
  const int64_t days = std::chrono::sys_days(first).time_since_epoch().count() + part(1000000) - 1;
  return ((days * 24 + part(10000)) * 60 + part(100)) * 60 + part(1);
}

int64_t end_of_period(int64_t seconds, uint32_t code) {
  constexpr uint32_t first_second = 0x3101;
  constexpr uint32_t one_minute = 0x3000;
  constexpr uint32_t one_week = 0x5000;
  constexpr uint32_t one_month = 0x6000;
  constexpr uint32_t one_year = 0x7000;
  if (code < period_of_a_day) {
    if (code >= first_second) return seconds + (code - (first_second - 1));
    return seconds + 60 * int64_t{code == one_minute ? 1 : code - one_minute};
  }
  const std::chrono::sys_days date(std::chrono::days(seconds / one_day));
  const auto second_of = [](std::chrono::sys_days first) {
    return first.time_since_epoch().count() * one_day;
  };
  if (code < one_week) return second_of(date + std::chrono::days(1));
  if (code < one_month) {
    return second_of(date - (std::chrono::weekday(date) - std::chrono::Monday) +
                     std::chrono::days(7));
  }
  const std::chrono::year_month_day parts(date);
  const unsigned months = code >= one_year ? 12 : code == one_month + 3 ? 3 : 1;
  const unsigned begun = (static_cast<unsigned>(parts.month()) - 1) / months * months + 1;
  const auto next = parts.year() / std::chrono::month(begun) + std::chrono::months(months);
  return second_of(next / std::chrono::day(1));
}

std::optional<uint32_t> infer_period(std::vector<int64_t> keys) {
  if (!std::ranges::is_sorted(keys)) std::ranges::sort(keys);
  std::map<uint32_t, size_t> counts;
  for (size_t i = 1; i < keys.size(); ++i) {
    const auto code = period_of_distance(seconds_of(keys[i]) - seconds_of(keys[i - 1]));
    if (code) ++counts[*code];
  }
  // Of equal counts the shorter period, which comes first, wins.
  const auto most = std::ranges::max_element(
      counts, [](const auto& left, const auto& right) { return left.second < right.second; });
  if (most == counts.end()) return std::nullopt;
  return most->first;
}

}  // namespace quor_bars
