#include "text.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "errors.h"

namespace quor_host {

std::string read_file(const std::string& path) {
  const std::filesystem::path name(std::u8string(path.begin(), path.end()));
  std::ifstream file(name, std::ios::binary);
  if (!file) throw HostError(path + ": can't be opened");
  std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (file.bad()) throw HostError(path + ": can't be read");
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
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || std::isinf(value)) return std::nullopt;
  return value;
}

std::string json_string(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') json += '\\';
    if (const auto byte = static_cast<unsigned char>(c); byte < 0x20) {
      json += {'\\', 'u', '0', '0', digits[byte >> 4U], digits[byte & 15U]};
    } else {
      json += c;
    }
  }
  json += '"';
  return json;
}

std::string json_number(double value) {
  if (std::isnan(value)) return "null";
  if (std::isinf(value)) return value > 0 ? "\"inf\"" : "\"-inf\"";
  char digits[32];
  // The short form writes large values as integers, which JSON readers refuse beyond 64 bits.
  const auto form =
      std::abs(value) < 1e15 ? std::chars_format::general : std::chars_format::scientific;
  return {digits, std::to_chars(digits, digits + sizeof digits, value, form).ptr};
}

}  // namespace quor_host
