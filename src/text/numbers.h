// Numbers as text, both ways, independent of the C locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quor {

/// The number that the whole of `text` spells: optional sign, digits, optional fraction, optional
/// exponent without a sign, hexadecimal floats, INF, INFINITY and NAN in any case. Values beyond
/// the range of a double read as an infinity or 0.
std::optional<double> to_number(std::string_view text);

/// The number at the start of `text`, signs of exponents allowed; 0 if there is none.
double leading_number(std::string_view text);

/// As `leading_number`, passing over blanks in front.
double leading_number_after_blanks(std::string_view text);

/// The integer at the start of `text`, decimal or hexadecimal behind "0x", with an optional sign;
/// 0 if there is none, cut to the 32-bit range.
int32_t leading_integer(std::string_view text);

/// As `leading_integer` for decimal text, but throws std::invalid_argument with the text
/// "invalid stoi argument" if no digit is there.
int32_t parse_integer(std::string_view text);

/// Appends the number with six decimals and no exponent; a NaN reads "nan" or "-nan" by its sign.
void append_fixed(std::string& out, double value);
std::string fixed_text(double value);

/// Appends a signed or unsigned integer in decimal.
void append_integer(std::string& out, int64_t value);

/// What a literal reads as that stands in quotes: the number between them, 0 if none can be read.
double literal_value(std::string_view quoted);

}  // namespace quor
