// Bars from a file of comma-separated values, and the row text that the library takes.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_host {

struct Bars {
  std::vector<int64_t> keys;  ///< row keys, YYYYMMDDhhmmss, in the order of the file
  std::map<uint32_t, std::vector<double>> columns;  ///< values by field id, NaN for an empty cell
};

/// Reads bars from a file, or from the standard input for "-". The first line names the columns;
/// columns of no known name are passed over. Throws HostError that names the line if anything in
/// the file is wrong.
Bars read_bars(const std::string& path);
Bars parse_bars(std::string_view text, const std::string& name);

/// The row key of "2000-01-03", "2000-01-03 09:35", "2000-01-03T09:35:00.000+08:00" or the same in
/// digits. The clock time counts as it is written: a zone doesn't move it, and a fraction of the
/// second is dropped.
std::optional<int64_t> parse_key(std::string_view text);

/// "2000-01-03", or with the time of day "2000-01-03 09:35:00".
std::string key_text(int64_t key, bool with_time);

/// The bars as the text of `set_row_data`, with the given fields only.
std::string rows_json(const Bars& bars, const std::vector<uint32_t>& fields);

}  // namespace quor_host
