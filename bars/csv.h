// Text of cells parted by commas, semicolons or tabs as rows.
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

/// What parts the cells of a text: the comma, or the semicolon or tab where its first line has no
/// comma outside of quotes and at least one of these.
char separator_of(std::string_view text);

/// Hands on each row of the text, blank lines left out; the row is gone when `take` returns. Throws
/// ReadError with the line at a stray or an open quote, where the rows in front have been handed
/// on; `name` is what the text is called there. What `take` throws ends the reading.
void read_csv(std::string_view text, const std::string& name,
              const std::function<void(const CsvRow&)>& take);

}  // namespace quor_bars
