// Comma-separated text as rows of cells.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_bars {

struct CsvRow {
  size_t line = 0;  ///< the first line of the text is 1
  std::vector<std::string> cells;
};

/// Hands on each row of the text, blank lines left out; the row is gone when `take` returns. Throws
/// ReadError with the line at a stray or an open quote, where the rows in front have been handed
/// on; `name` is what the text is called there. What `take` throws ends the reading.
void read_csv(std::string_view text, const std::string& name,
              const std::function<void(const CsvRow&)>& take);

}  // namespace quor_bars
