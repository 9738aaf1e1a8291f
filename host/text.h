// Texts and numbers: files, letters, JSON.
#pragma once

#include <string>
#include <string_view>

#include "bars/text.h"

namespace quor_host {

using quor_bars::read_file;
using quor_bars::read_stream;
using quor_bars::to_number;
using quor_bars::to_upper;

/// As `read_file`; "-" stands for the standard input.
std::string read_input(const std::string& path);

/// What messages call it.
std::string input_name(const std::string& path);

/// A JSON string with its quotes.
std::string json_string(std::string_view text);

/// A cell of comma-separated values, in quotes if it needs them.
std::string csv_cell(const std::string& text);

/// Appends a number that reads back to the same bits: to comma-separated values, where a null is
/// empty, and to JSON, where it is null and an infinity is a string.
void append_csv_number(std::string& text, double value);
void append_json_number(std::string& text, double value);

}  // namespace quor_host
