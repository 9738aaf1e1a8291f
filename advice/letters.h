// Letters and digits of ASCII, independent of the locale, and the characters of UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quor_advice {

constexpr size_t absent = std::string_view::npos;

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool is_beyond_ascii(char c) { return static_cast<unsigned char>(c) >= 0x80; }

/// Letters of ASCII in capitals; all other bytes as they are.
std::string to_upper(std::string_view text);

/// The whole text as a number, infinities and NaN included; nothing for any other text.
std::optional<double> to_number(std::string_view text);

/// A number as a script may write it, without an exponent.
std::string number_text(double value);

/// Bytes of the character that begins with this byte; 1 for a byte that begins none.
size_t character_size(char first);

/// Bytes of the whole character at the front of a text that isn't empty; 1 for no UTF-8.
size_t front_character(std::string_view text);

/// Number of characters. Bytes that are no UTF-8 count one each.
size_t count_characters(std::string_view text);

/// Places on a screen: two for the wide characters of East Asia, one for all others.
size_t width_of(std::string_view text);

}  // namespace quor_advice
