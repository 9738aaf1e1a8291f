#include "json.h"

#include <charconv>
#include <cmath>
#include <iterator>

namespace quor_npm {

Json& Json::open(char bracket) {
  put({&bracket, 1});
  wants_comma_ = false;
  return *this;
}

Json& Json::close(char bracket) {
  out_ += bracket;
  wants_comma_ = true;
  return *this;
}

Json& Json::key(std::string_view name) {
  text(name);
  out_ += ':';
  wants_comma_ = false;
  return *this;
}

Json& Json::text(std::string_view value) {
  constexpr std::string_view digits = "0123456789abcdef";
  put("\"");
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20) {
      out_ += "\\u00";
      out_ += digits[byte >> 4];
      out_ += digits[byte & 15];
      continue;
    }
    if (c == '"' || c == '\\') out_ += '\\';
    out_ += c;
  }
  out_ += '"';
  return *this;
}

Json& Json::number(double value) {
  if (!std::isfinite(value)) return null();
  char digits[40];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value);
  return put({std::begin(digits), end.ptr});
}

Json& Json::integer(int64_t value) { return put(std::to_string(value)); }
Json& Json::boolean(bool value) { return put(value ? "true" : "false"); }
Json& Json::null() { return put("null"); }

Json& Json::put(std::string_view token) {
  if (wants_comma_) out_ += ',';
  out_ += token;
  wants_comma_ = true;
  return *this;
}

}  // namespace quor_npm
