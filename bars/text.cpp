#include "text.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "errors.h"

namespace quor_bars {
namespace {

struct Packed {
  std::string_view mark;  ///< how such a file begins
  std::string_view name;
  std::string_view cure;
};

constexpr Packed packed_files[] = {
    {"\x1F\x8B", "packed by gzip", "unpack it by gzip -d, or read it from a pipe of gzip -dc"},
    {"BZh", "packed by bzip2", "unpack it by bzip2 -d, or read it from a pipe of bzip2 -dc"},
    {"\xFD"
     "7zXZ",
     "packed by xz", "unpack it by xz -d, or read it from a pipe of xz -dc"},
    {"\x28\xB5\x2F\xFD", "packed by zstd",
     "unpack it by zstd -d, or read it from a pipe of zstd -dc"},
    {"PK\x03\x04", "an archive or a workbook", "unpack it, or save its sheet as CSV"},
    {"\xD0\xCF\x11\xE0", "a workbook", "save its sheet as CSV"},
};

void refuse_packed(std::string_view bytes, const std::string& name) {
  for (const Packed& packed : packed_files) {
    if (!bytes.starts_with(packed.mark)) continue;
    throw ReadError(name + ": is " + std::string(packed.name) + "; " + std::string(packed.cure));
  }
}

/// The number that a few digits are, perhaps with a sign in front and a point between them; nothing
/// for any other text. What it divides is exact, so that only the quotient is rounded.
std::optional<double> short_number(std::string_view text) {
  constexpr double powers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                               1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  constexpr size_t most_digits = 15;
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  if (text.size() > most_digits + 1) return std::nullopt;
  int64_t digits = 0;
  size_t point = text.size();
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      digits = digits * 10 + (c - '0');
    } else if (c == '.' && point == text.size()) {
      point = i;
    } else {
      return std::nullopt;
    }
  }
  const size_t behind = text.size() - std::min(text.size(), point + 1);
  const bool has_point = point < text.size();
  if (point == 0 || (has_point && behind == 0) || point + behind > most_digits) return std::nullopt;
  const double value = static_cast<double>(digits) / powers[behind];
  return negative ? -value : value;
}

}  // namespace

std::string_view beginning_of_text(std::string_view bytes, const std::string& name) {
  refuse_packed(bytes, name);
  constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";
  if (bytes.starts_with(utf8_mark)) bytes.remove_prefix(utf8_mark.size());
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    throw ReadError(name + ": the text is UTF-16; save it as UTF-8");
  }
  if (bytes.empty()) throw ReadError(name + ": is empty");
  return bytes;
}

std::string to_upper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::optional<double> to_number(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  if (const auto value = short_number(text)) return value;
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = fast_float::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || std::isinf(value)) return std::nullopt;
  return value;
}

}  // namespace quor_bars
