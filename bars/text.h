// Files, letters and numbers.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace quor_bars {

/// The bytes of a text file, without a byte order mark. Throws ReadError for a file that isn't
/// there, can't be read, is empty or isn't UTF-8.
std::string read_file(const std::string& path);

/// The same of a stream; `name` is what the text is called in messages.
std::string read_stream(std::istream& stream, const std::string& name);

/// The mark that some editors put in front of UTF-8.
inline constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

/// Throws ReadError for the bytes of a file that is empty, packed or no text of single bytes.
void require_plain_text(std::string_view bytes, const std::string& name);

/// ASCII letters only; other bytes stay.
std::string to_upper(std::string_view text);

/// The number that the whole text is. Infinities are none.
std::optional<double> to_number(std::string_view text);

}  // namespace quor_bars
