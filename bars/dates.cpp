#include "dates.h"

#include <algorithm>
#include <chrono>
#include <span>

namespace quor_bars {
namespace {

constexpr std::string_view key_patterns[] = {
    "####-##-##",          "####/##/##",        "########",         "####-##-## ##:##:##",
    "####/##/## ##:##:##", "######## ##:##:##", "####-##-## ##:##", "####/##/## ##:##",
    "######## ##:##",      "######## ######",   "##############",   "############",
    "######## ####"};

constexpr std::string_view zone_patterns[] = {"##", "####", "##:##"};
constexpr std::string_view zone_words[] = {"Z", "z", "UTC", "GMT"};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool matches(std::string_view text, std::string_view pattern) {
  return std::ranges::equal(
      text, pattern, [](char c, char place) { return place == '#' ? is_digit(c) : c == place; });
}

bool matches_one(std::string_view text, std::span<const std::string_view> patterns) {
  return std::ranges::any_of(patterns,
                             [text](std::string_view pattern) { return matches(text, pattern); });
}

/// The text in front of a zone such as Z, +08:00 or -0500.
std::string_view without_zone(std::string_view text) {
  for (const std::string_view word : zone_words) {
    if (text.ends_with(word)) return text.substr(0, text.size() - word.size());
  }
  constexpr size_t least_date_and_time = 12;  // signs further in front belong to the date
  const size_t sign = text.find_last_of("+-");
  const bool is_zone = sign != std::string_view::npos && sign >= least_date_and_time &&
                       matches_one(text.substr(sign + 1), zone_patterns);
  return is_zone ? text.substr(0, sign) : text;
}

/// The text in front of a fraction of the second.
std::string_view without_fraction(std::string_view text) {
  constexpr size_t least_with_seconds = 14;
  const size_t point = text.find_last_of(".,");
  if (point == std::string_view::npos || point < least_with_seconds) return text;
  const std::string_view digits = text.substr(point + 1);
  return !digits.empty() && std::ranges::all_of(digits, is_digit) ? text.substr(0, point) : text;
}

/// Date and time alone, with a blank between them.
std::string plain_date(std::string_view text) {
  text = without_zone(text);
  while (text.ends_with(' ')) text.remove_suffix(1);
  std::string plain(without_fraction(text));
  const size_t mark = plain.find_first_of("Tt");
  if (mark != std::string::npos) plain[mark] = ' ';
  return plain;
}

bool is_date_and_time(int64_t key) {
  const auto part = [key](int64_t unit) { return key / unit % 100; };
  const std::chrono::year_month_day day{std::chrono::year{static_cast<int>(key / 10000000000)},
                                        std::chrono::month{static_cast<unsigned>(part(100000000))},
                                        std::chrono::day{static_cast<unsigned>(part(1000000))}};
  return key >= 10000000000 && day.ok() && part(10000) < 24 && part(100) < 60 && part(1) < 60;
}

/// The key that the digits of a date make in its plain form.
std::optional<int64_t> key_of_plain(std::string_view plain) {
  if (!matches_one(plain, key_patterns)) return std::nullopt;
  int64_t key = 0;
  int digits = 0;
  for (const char c : plain) {
    if (!is_digit(c)) continue;
    key = key * 10 + (c - '0');
    ++digits;
  }
  for (; digits < 14; ++digits) key *= 10;
  if (!is_date_and_time(key)) return std::nullopt;
  return key;
}

}  // namespace

std::optional<int64_t> parse_key(std::string_view text) {
  const auto key = key_of_plain(text);
  return key ? key : key_of_plain(plain_date(text));
}

std::string date_fault(std::string_view text) {
  const bool has_form =
      matches_one(text, key_patterns) || matches_one(plain_date(text), key_patterns);
  if (has_form) return "no calendar and no clock has it";
  return "write 2024-01-31, 2024-01-31 09:35:00 or 20240131093500, the year first";
}

std::string key_text(int64_t key, bool with_time) {
  std::string digits = std::to_string(key);
  if (digits.size() != 14) return digits;
  const auto part = [&digits](size_t at) { return digits.substr(at, 2); };
  std::string text = digits.substr(0, 4) + '-' + part(4) + '-' + part(6);
  if (with_time) text += ' ' + part(8) + ':' + part(10) + ':' + part(12);
  return text;
}

}  // namespace quor_bars
