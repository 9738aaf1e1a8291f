// Text of cells parted by commas, semicolons, tabs or bars as rows.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_bars {

struct CsvRow {
  size_t line = 0;  ///< the first line of the text is 1
  std::vector<std::string_view> cells;
};

/// What parts the cells of a text: the comma, or where its first line has none outside of quotes
/// the one of semicolon, tab and bar that it has most of.
char separator_of(std::string_view text);

/// Reads a text that comes piece by piece, cut anywhere, and hands on each row once its end is
/// there, blank lines left out. The row is gone when `take` returns; what `take` throws ends the
/// reading. `name` is what the text is called in messages.
class CsvReader {
 public:
  using Take = std::function<void(const CsvRow&)>;

  /// Without a separator the text tells it.
  CsvReader(std::string name, std::optional<char> separator, Take take);

  /// Throws ReadError at a stray quote, where the rows in front have been handed on, and for a text
  /// that begins as none does that can be read.
  void feed(std::string_view bytes);
  /// The text is at its end: its last row needs no line end. Throws for an open quote, too.
  void finish();

 private:
  /// Hands on the rows of the text in front; what it leaves is the beginning of one.
  std::string_view take_rows(std::string_view text, bool is_last);
  void take_plain(std::string_view line);
  /// A row with quotes or with other line ends: how long it is, or nothing if its end isn't there.
  std::optional<size_t> take_careful(std::string_view text, bool is_last);
  void hand_on(size_t line);

  std::string name_;
  std::optional<char> separator_;
  Take take_;
  bool has_begun_ = false;
  size_t line_ = 1;
  std::string rest_;  ///< of a row whose end isn't there
  CsvRow row_;
  std::vector<std::string> quoted_;  ///< cells of a row with quotes
};

/// All of a text at once.
void read_csv(std::string_view text, const std::string& name, std::optional<char> separator,
              const CsvReader::Take& take);

}  // namespace quor_bars
