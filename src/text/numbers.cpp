#include "text/numbers.h"

#include <algorithm>
#include <charconv>
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

/// What a number beyond the range of a double reads as. A text that long has an exponent or many
/// digits; only the sign of the whole exponent decides.
double beyond_range(std::string_view digits, bool hexadecimal) {
  const char exponent_sign = hexadecimal ? 'p' : 'e';
  const size_t mark = std::min(digits.find(exponent_sign),
                               digits.find(static_cast<char>(exponent_sign - 'a' + 'A')));
  if (mark != std::string_view::npos) {
    const bool negative = mark + 1 < digits.size() && digits[mark + 1] == '-';
    return negative ? 0.0 : std::numeric_limits<double>::infinity();
  }
  const std::string_view whole = digits.substr(0, digits.find('.'));
  const bool large = whole.find_first_not_of('0') != std::string_view::npos;
  return large ? std::numeric_limits<double>::infinity() : 0.0;
}

bool has_hexadecimal_prefix(std::string_view text) {
  return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

Parsed parse_unsigned(std::string_view text) {
  if (text.empty() || text.front() == '-' || text.front() == '+') return {};
  const bool hexadecimal = has_hexadecimal_prefix(text);
  const size_t prefix = hexadecimal ? 2 : 0;
  const char* first = text.data() + prefix;
  const char* last = text.data() + text.size();
  if (hexadecimal && *first == '-') return {0.0, 1};
  Parsed parsed;
  const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
  const auto [end, fault] = std::from_chars(first, last, parsed.value, format);
  if (fault == std::errc::invalid_argument) return hexadecimal ? Parsed{0.0, 1} : Parsed{};
  parsed.length = static_cast<size_t>(end - text.data());
  if (fault == std::errc::result_out_of_range) {
    parsed.value = beyond_range(text.substr(prefix, parsed.length - prefix), hexadecimal);
  }
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
