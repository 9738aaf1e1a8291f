// Where rows lie between the left and the right edge of the panels.
#pragma once

#include <cstddef>
#include <vector>

namespace quor_host {

/// The rows that are drawn at one place: one, or as many as fall on a column of pixels where there
/// are more rows than pixels.
struct Slot {
  size_t begin = 0;
  size_t end = 0;
  double x = 0.0;
};

/// Some room is left behind the last row, for texts and for lines that go on.
class TimeAxis {
 public:
  TimeAxis(double left, double right, size_t first_row, size_t rows);

  double left() const { return left_; }
  double right() const { return right_; }
  /// Pixels from a slot to the next one, and from a row to the next one.
  double slot_width() const { return slot_width_; }
  double row_width() const { return slot_width_ / rows_per_slot_; }
  /// The middle of a row's slot, which is the middle of a pixel. Rows may lie out of sight.
  double x(size_t row) const;
  /// The width of a bar in whole pixels, an odd number of them.
  double bar_width() const;

  const std::vector<Slot>& slots() const { return slots_; }
  /// The first of the given rows in each slot.
  std::vector<size_t> one_per_slot(const std::vector<size_t>& rows) const;

 private:
  double slot_of(size_t row) const;

  double left_;
  double right_;
  double first_row_;
  double slot_width_ = 1.0;
  double rows_per_slot_ = 1.0;
  std::vector<Slot> slots_;
};

}  // namespace quor_host
