// Bars from comma-separated text.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_bars {

struct Bars {
  std::vector<int64_t> keys;  ///< row keys, YYYYMMDDhhmmss, in the order of the file
  std::map<uint32_t, std::vector<double>> columns;  ///< values by field id, NaN for an empty cell
  /// What no market can have quoted, by kind the first one with its line: "a.csv:5: the high 10 is
  /// below the low 11". The values are there as they stand in the file.
  std::vector<std::string> doubts;
};

/// How a file differs from the usual.
struct Naming {
  std::optional<std::string> time;  ///< the column of the dates
  /// Columns by field id, for fields that have no usual word or stand under another; a field
  /// without a column is one that the file doesn't have.
  std::map<uint32_t, std::optional<std::string>> fields;
  bool dates_repeat = false;  ///< bars of one date are all read
};

/// The first line names the columns; columns of no known name are passed over. `name` is what the
/// text is called in messages. Throws ReadError that names the line if anything in the text is
/// wrong.
Bars parse_bars(std::string_view text, const std::string& name, const Naming& naming = {});

}  // namespace quor_bars
