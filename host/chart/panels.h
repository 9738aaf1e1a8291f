// What is drawn where: the bars in sight, and the panels that share the sheet.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../bars.h"
#include "../session.h"
#include "canvas.h"
#include "records.h"

namespace quor_host {

/// The bars in sight and the columns of the run, rows in ascending order of their keys.
class View {
 public:
  View(const Session& session, const Bars& bars, size_t last);

  size_t first_row() const { return first_; }
  size_t row_count() const { return keys_.size(); }
  int64_t key(size_t row) const { return keys_[row]; }
  /// The bar's own values; NaN where the file has none. Ids as the library uses them.
  double bar(uint32_t field, size_t row) const;

  double value(std::optional<uint32_t> column, size_t row) const;
  /// Whether the record shows at the bar; a record without such a column shows everywhere.
  bool shows(std::optional<uint32_t> column, size_t row) const;

 private:
  const Session& session_;
  std::vector<int64_t> keys_;
  std::map<uint32_t, std::vector<double>> bars_;
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

/// The panels from the top: the bars with what lies near them, then records far from the price.
std::vector<Panel> arrange(const View& view, const std::vector<Record>& records);

}  // namespace quor_host
