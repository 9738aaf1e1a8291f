// Comma-separated text as rows of cells.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quor_host {

struct CsvRow {
  size_t line = 0;  ///< the first line of the text is 1
  std::vector<std::string> cells;
};

/// All rows of the text, blank lines left out. Throws HostError with the line at a stray or an open
/// quote; `name` is what the text is called there.
std::vector<CsvRow> read_csv(std::string_view text, const std::string& name);

}  // namespace quor_host
