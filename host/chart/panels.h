// What is drawn where: the bars in sight, and the panels that share the sheet.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../bars.h"
#include "../session.h"
#include "records.h"

namespace quor_host {

/// A number of so many decimals.
std::string number_text(double value, int digits);

/// What a script would write to draw the bars of the file: candles, or a line where the file has
/// the close only. They lie over what is meant as a background, under all else.
Record bars_record(const Bars& bars);

/// The bars in sight and the columns of the run, rows in ascending order of their keys.
class View {
 public:
  View(const Session& session, const Bars& bars, size_t last);

  size_t first_row() const { return first_; }
  size_t row_count() const { return order_.size(); }
  size_t last_row() const { return order_.size() - 1; }
  int64_t key(size_t row) const { return bars_.keys[order_[row]]; }
  /// A value of a column or of a field of the bars, by the library's ids. NaN where there is none,
  /// and for one that is too large for any axis.
  double value(std::optional<uint32_t> column, size_t row) const;
  /// Whether the record shows at the bar; a record without such a column shows everywhere.
  bool shows(std::optional<uint32_t> column, size_t row) const;

  /// The first row that the record is about: some look at the last bar only.
  size_t first_row(const Record& record) const;
  /// The rows from there where it shows.
  std::vector<size_t> rows(const Record& record) const;

 private:
  const Session& session_;
  const Bars& bars_;
  std::vector<size_t> order_;  ///< where the bar of a row stands in the file
  size_t first_ = 0;
};

struct Range {
  double low = 0.0;
  double high = 0.0;
  bool empty = true;

  void take(double value);
  double span() const { return high - low; }
};

/// A strip of the sheet with a value axis of its own.
struct Panel {
  Range range;
  std::vector<const Record*> records;
  double top = 0.0;
  double bottom = 0.0;

  double y(double value) const {
    return bottom - (value - range.low) / range.span() * (bottom - top);
  }
};

/// The panels from the top: the first record with what lies near it, then what is far from it. The
/// last panel takes what would need more panels than there may be.
std::vector<Panel> arrange(const View& view, const std::vector<Record>& records, size_t most);

}  // namespace quor_host
