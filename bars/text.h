// Files, letters and numbers.
#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace quor_bars {

/// A file to read. Throws ReadError for one that isn't there or can't be opened.
std::ifstream open_file(const std::string& path);

/// The bytes of a text file, without a byte order mark. Throws ReadError for a file that isn't
/// there, can't be read, is empty or isn't UTF-8.
std::string read_file(const std::string& path);

/// What follows a byte order mark at the beginning of a text. Throws ReadError for bytes that begin
/// as a packed file, a workbook or UTF-16 does, and where there are none.
std::string_view beginning_of_text(std::string_view bytes, const std::string& name);

/// The same of a stream; `name` is what the text is called in messages.
std::string read_stream(std::istream& stream, const std::string& name);

/// ASCII letters only; other bytes stay.
std::string to_upper(std::string_view text);

/// The number that the whole text is. Infinities are none.
std::optional<double> to_number(std::string_view text);

}  // namespace quor_bars
