// Which records share a value axis, and the strips of the sheet they are drawn in.
#pragma once

#include <string>
#include <vector>

#include "records.h"
#include "view.h"

namespace quor_host {

struct Range {
  double low = 0.0;
  double high = 0.0;
  bool empty = true;

  void take(double value);
  double span() const { return high - low; }
  /// How far its values lie from 0.
  double reach() const;
};

/// A line that has the same value at every bar in sight.
struct Level {
  const Record* record = nullptr;
  double value = 0.0;
};

/// A strip of the sheet with a value axis of its own.
struct Panel {
  Range range;
  std::vector<const Record*> records;
  std::vector<Level> levels;
  int digits = 2;  ///< decimals of its values
  double top = 0.0;
  double bottom = 0.0;
  double legend_top = 0.0;

  double height() const { return bottom - top; }
  double y(double value) const {
    return bottom - (value - range.low) / range.span() * (bottom - top);
  }
};

/// What a script would write to draw the bars of the file: candles, or a line where the file has
/// the close only. They lie over what is meant as a background, under all else.
Record bars_record(const View& view);
Record volume_record();

/// The panels from the top: the first record with what lies near it, then what is far from it. The
/// last panel takes what would need more panels than there may be. `wide` has the bars of the view
/// and others before them.
std::vector<Panel> arrange(const View& view, const View& wide, const std::vector<Record>& records,
                           size_t most);

}  // namespace quor_host
