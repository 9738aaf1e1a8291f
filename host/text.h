// Texts and numbers: files, letters, JSON.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quor_host {

/// The bytes of a text file, without a byte order mark. Throws HostError for a file that isn't
/// there, can't be read, is empty or isn't UTF-8.
std::string read_file(const std::string& path);

/// The same; "-" stands for the standard input.
std::string read_input(const std::string& path);

/// What messages call it.
std::string input_name(const std::string& path);

/// ASCII letters only; other bytes stay.
std::string to_upper(std::string_view text);

/// The number that the whole text is. Infinities are none.
std::optional<double> to_number(std::string_view text);

/// A JSON string with its quotes.
std::string json_string(std::string_view text);

/// A JSON number that reads back to the same bits; null for a NaN, a string for an infinity.
std::string json_number(double value);

}  // namespace quor_host
