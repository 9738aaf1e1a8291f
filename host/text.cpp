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

std::string csv_cell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

void append_csv_number(std::string& text, double value) {
  if (std::isnan(value)) return;
  if (std::isinf(value)) {
    text += value > 0 ? "inf" : "-inf";
  } else {
    append_json_number(text, value);
  }
}

void append_json_number(std::string& text, double value) {
  if (std::isnan(value)) {
    text += "null";
  } else if (std::isinf(value)) {
    text += value > 0 ? "\"inf\"" : "\"-inf\"";
  } else {
    char digits[32];
    // The short form writes large values as integers, which JSON readers refuse beyond 64 bits.
    const auto form =
        std::abs(value) < 1e15 ? std::chars_format::general : std::chars_format::scientific;
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value, form).ptr);
  }
}

}  // namespace quor_host
