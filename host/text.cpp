#include "text.h"

#include <charconv>
#include <cmath>
#include <iostream>

namespace quor_host {

std::string read_input(const std::string& path) {
  return path == "-" ? read_stream(std::cin, input_name(path)) : read_file(path);
}

std::string input_name(const std::string& path) { return path == "-" ? "standard input" : path; }

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
