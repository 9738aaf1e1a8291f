#include "letters.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace quor_advice {
namespace {

bool continues(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

template <typename Use>
void for_each_character(std::string_view text, const Use& use) {
  while (!text.empty()) {
    const size_t size = front_character(text);
    use(text.substr(0, size));
    text.remove_prefix(size);
  }
}

}  // namespace

std::string to_upper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::optional<double> to_number(std::string_view text) {
  double number = 0.0;
  const auto [stop, error] = fast_float::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || stop != text.data() + text.size()) {
    return std::nullopt;
  }
  return number;
}

std::string number_text(double value) {
  std::array<char, 400> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  return {digits.data(), end.ptr};
}

size_t character_size(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte >= 0xF0 && byte <= 0xF4) return 4;
  if (byte >= 0xE0 && byte < 0xF0) return 3;
  return byte >= 0xC2 && byte < 0xE0 ? 2 : 1;
}

size_t front_character(std::string_view text) {
  const size_t size = character_size(text[0]);
  if (size > text.size()) return 1;
  for (size_t i = 1; i < size; ++i) {
    if (!continues(text[i])) return 1;
  }
  return size;
}

size_t count_characters(std::string_view text) {
  size_t count = 0;
  for_each_character(text, [&count](std::string_view) { ++count; });
  return count;
}

size_t width_of(std::string_view text) {
  size_t width = 0;
  for_each_character(text, [&width](std::string_view character) {
    // From U+3000 on most letters are wide; of the three-byte ones below none is.
    width += static_cast<unsigned char>(character[0]) >= 0xE3 && character.size() >= 3 ? 2 : 1;
  });
  return width;
}

}  // namespace quor_advice
