#include "text/numbers.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "text/strings.h"

namespace quor {
namespace {

struct Parsed {
  double value = 0;
  size_t length = 0;  ///< bytes taken; 0 if no number is there
};

bool has_hexadecimal_prefix(std::string_view text) {
  return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

/// More than the digits of any text can outweigh.
constexpr int64_t far_power = int64_t{1} << 40;

/// The value of mantissa * 2^exponent, rounded once, halves to the even one.
double rounded(uint64_t mantissa, int64_t exponent) {
  if (mantissa == 0) return 0.0;
  constexpr int64_t least_exponent = -1074;
  constexpr int64_t digits = std::numeric_limits<double>::digits;
  const auto width = static_cast<int64_t>(std::bit_width(mantissa));
  const int64_t excess = std::max(width - digits, least_exponent - exponent);
  if (excess > 0) {
    if (excess > std::numeric_limits<uint64_t>::digits) return 0.0;
    const uint64_t half = uint64_t{1} << (excess - 1);
    const uint64_t rest = mantissa & (2 * half - 1);
    mantissa = excess == std::numeric_limits<uint64_t>::digits ? 0 : mantissa >> excess;
    if (rest > half || (rest == half && mantissa % 2 == 1)) ++mantissa;
    exponent += excess;
  }
  return std::ldexp(static_cast<double>(mantissa),
                    static_cast<int>(std::min<int64_t>(exponent, 9999)));
}

int hexadecimal_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char small = static_cast<char>(c | 0x20);
  return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

/// A hexadecimal number without its prefix. Digits that the mantissa has no room for count as not
/// 0.
Parsed parse_hexadecimal(std::string_view text) {
  uint64_t mantissa = 0;
  int64_t exponent = 0;
  size_t at = 0;
  bool has_digits = false;
  bool in_fraction = false;
  for (; at < text.size(); ++at) {
    if (text[at] == '.' && !in_fraction) {
      in_fraction = true;
      continue;
    }
    const int digit = hexadecimal_digit(text[at]);
    if (digit < 0) break;
    has_digits = true;
    const bool has_room = mantissa >> 60 == 0;
    mantissa =
        has_room ? mantissa * 16 + static_cast<uint64_t>(digit) : mantissa | uint64_t{digit != 0};
    exponent += (has_room ? 0 : 4) - (in_fraction ? 4 : 0);
  }
  if (!has_digits) return {};
  if (at + 1 < text.size() && (text[at] == 'p' || text[at] == 'P')) {
    int64_t power = 0;
    const char* first = text.data() + at + (text[at + 1] == '+' ? 2 : 1);
    const auto [end, fault] = std::from_chars(first, text.data() + text.size(), power);
    if (fault != std::errc::invalid_argument && !(first[-1] == '+' && *first == '-')) {
      if (fault == std::errc::result_out_of_range) power = *first == '-' ? -far_power : far_power;
      exponent += std::clamp(power, -far_power, far_power);
      at = static_cast<size_t>(end - text.data());
    }
  }
  return {rounded(mantissa, exponent), at};
}

Parsed parse_unsigned(std::string_view text) {
  if (text.empty() || text.front() == '-' || text.front() == '+') return {};
  if (has_hexadecimal_prefix(text)) {
    const Parsed parsed = parse_hexadecimal(text.substr(2));
    return parsed.length == 0 ? Parsed{0.0, 1} : Parsed{parsed.value, parsed.length + 2};
  }
  Parsed parsed;
  const auto [end, fault] =
      fast_float::from_chars(text.data(), text.data() + text.size(), parsed.value);
  if (fault == std::errc::invalid_argument) return {};
  parsed.length = static_cast<size_t>(end - text.data());
  return parsed;
}

Parsed parse_signed(std::string_view text) {
  const size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  Parsed parsed = parse_unsigned(text.substr(sign));
  if (parsed.length == 0) return {};
  if (sign == 1 && text[0] == '-') parsed.value = -parsed.value;
  parsed.length += sign;
  return parsed;
}

int32_t cut_to_range(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                  std::numeric_limits<int32_t>::max()));
}

std::optional<int32_t> integer_prefix(std::string_view text, int base) {
  int64_t value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (fault == std::errc::invalid_argument) return std::nullopt;
  if (fault == std::errc::result_out_of_range) {
    return text.front() == '-' ? std::numeric_limits<int32_t>::min()
                               : std::numeric_limits<int32_t>::max();
  }
  return cut_to_range(value);
}

}  // namespace

std::optional<double> to_number(std::string_view text) {
  const Parsed parsed = parse_signed(text);
  if (parsed.length == 0 || parsed.length != text.size()) return std::nullopt;
  // A sign inside a number could only belong to an exponent.
  if (text.find_first_of("+-", 1) != std::string_view::npos) return std::nullopt;
  return parsed.value;
}

double leading_number(std::string_view text) { return parse_signed(text).value; }

double leading_number_after_blanks(std::string_view text) {
  const size_t start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? 0.0 : leading_number(text.substr(start));
}

int32_t leading_integer(std::string_view text) {
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  if (text.empty() || text[0] == '-') return 0;
  const bool hexadecimal = has_hexadecimal_prefix(text);
  if (hexadecimal) text.remove_prefix(2);
  if (text[0] == '-') return 0;
  const int64_t value = integer_prefix(text, hexadecimal ? 16 : 10).value_or(0);
  return cut_to_range(negative ? -value : value);
}

int32_t parse_integer(std::string_view text) {
  const std::optional<int32_t> value = integer_prefix(text, 10);
  if (!value) throw std::invalid_argument("invalid stoi argument");
  return *value;
}

void append_fixed(std::string& out, double value) {
  if (value != value) {  // which libraries of C++ write in several ways
    out += std::signbit(value) ? "-nan" : "nan";
    return;
  }
  char digits[352];  // 309 digits of the greatest double, sign, point and six decimals
  const auto end =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6).ptr;
  out.append(digits, end);
}

std::string fixed_text(double value) {
  std::string out;
  append_fixed(out, value);
  return out;
}

void append_integer(std::string& out, int64_t value) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

double literal_value(std::string_view quoted) {
  if (quoted.size() < 2) return 0.0;
  return leading_number_after_blanks(quoted.substr(1, quoted.size() - 2));
}

}  // namespace quor
