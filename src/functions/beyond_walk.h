// The walk back over an argument's values that lie beyond a threshold, and what a call remembers of
// it.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "functions/call_memory.h"
#include "functions/window_extremes.h"

namespace quor {

/// The outermost values of blocks of rows: of sixteen rows each, of sixteen such blocks, and so on.
template <Extreme extreme>
class BlockExtremes final : public CallMemory {
 public:
  static constexpr int32_t fan = 16;

  /// How many rows up to and including `last` make up the largest block without a value beyond the
  /// threshold; 0 if none is known.
  int32_t rows_without(int32_t last, double threshold) const {
    int32_t rows = 0;
    int32_t size = fan;
    for (const std::vector<RowBlock>& blocks : levels_) {
      if (last % size != size - 1) break;
      const auto place = static_cast<size_t>(last / size);
      if (!knows(blocks, place) || beats<extreme>(blocks[place].outermost, threshold)) break;
      rows = size;
      size *= fan;
    }
    return rows;
  }

  void learn(int32_t first, double outermost) {
    store(levels_[0], static_cast<size_t>(first / fan), outermost);
  }

  /// Learns the larger blocks from `first` up to `end` at most, of whose parts all are known.
  void join(int32_t first, int32_t end) {
    int64_t size = fan;
    for (size_t level = 1; level < levels_.size(); ++level) {
      size *= fan;
      if (first % size != 0 || first + size > end) return;
      join_parts(level, static_cast<size_t>(first / size));
    }
  }

  /// To be told of each row at which the series is evaluated first. False behind a row that was
  /// left out: evaluating again what keeps a state may change it there.
  bool pass(int32_t row) {
    // At the first row that was left out the order begins again.
    if (goes_by_values() && row == passed_) {
      cut(row);
      go_in_order();
    }
    if (row > passed_ || goes_by_values()) return false;
    passed_ = std::max(passed_, row + 1);
    return true;
  }

 private:
  struct RowBlock {
    double outermost = null_value;  ///< null if all values are
    bool is_known = false;
  };

  void drop_from(int32_t row) override {
    passed_ = std::min(passed_, row);
    for (std::vector<RowBlock>& blocks : levels_) {
      row /= fan;
      if (static_cast<size_t>(row) < blocks.size()) blocks.resize(static_cast<size_t>(row));
    }
  }

  static bool knows(const std::vector<RowBlock>& blocks, size_t place) {
    return place < blocks.size() && blocks[place].is_known;
  }

  static void store(std::vector<RowBlock>& blocks, size_t place, double outermost) {
    if (place >= blocks.size()) blocks.resize(place + 1);
    blocks[place] = {outermost, true};
  }

  void join_parts(size_t level, size_t place) {
    if (knows(levels_[level], place)) return;
    double outermost = null_value;
    for (size_t part = place * fan; part < (place + 1) * fan; ++part) {
      take_outer<extreme>(outermost, levels_[level - 1][part].outermost);
    }
    store(levels_[level], place, outermost);
  }

  std::array<std::vector<RowBlock>, 4> levels_;
  int32_t passed_ = 0;  ///< the rows before have been evaluated one after the other
};

/// One walk down the rows of an argument. It leaps over blocks that are known to hold nothing
/// beyond the threshold, and evaluates no row that a plain walk wouldn't come to.
template <Extreme extreme>
class BeyondWalk {
 public:
  /// For a bar at which the series is evaluated at `newest` before any earlier row.
  BeyondWalk(const Call& call, size_t series, double threshold, int32_t newest)
      : call_(call), series_(series), threshold_(threshold), end_(call.row - short_walk) {
    const Remembering remembering = call.variable.remembering;
    const bool inside = call.row < call.table().row_count();
    if (!inside || remembering == Remembering::nothing) return;
    blocks_ = &memory_of<Blocks>(call.script(), call.variable);
    const bool in_order = blocks_->pass(newest) && remembering == Remembering::in_order;
    if (in_order || remembering == Remembering::catching_up) return;
    blocks_->go_by_values(call.table().watch_changes());
  }

  /// So many rows are looked at sooner than a memory.
  static constexpr int32_t short_walk = 16;

  /// The next row to look at, `row` or one before it; negative if there is none.
  int32_t next(int32_t row) {
    if (row % Blocks::fan != Blocks::fan - 1) return row;
    outermost_ = null_value;
    if (blocks_ == nullptr) return row;
    // What the walk has evaluated may have changed what others rest on.
    if (blocks_->goes_by_values()) blocks_->go_by_values(call_.table().watch_changes());
    while (row >= 0) {
      const int32_t rows = blocks_->rows_without(row, threshold_);
      if (rows == 0) break;
      row -= rows;
      blocks_->join(row + 1, end_);
    }
    return row;
  }

  /// Takes in the value at a row that `next` gave.
  void pass(int32_t row, double value) {
    take_outer<extreme>(outermost_, value);
    if (row % Blocks::fan != 0 || blocks_ == nullptr || row + Blocks::fan > end_) return;
    if (blocks_->goes_by_values() && call_.recalled_end(row, series_, 1) < row + Blocks::fan)
      return;
    blocks_->learn(row, outermost_);
    blocks_->join(row, end_);
  }

 private:
  using Blocks = BlockExtremes<extreme>;

  const Call& call_;
  const size_t series_;
  const double threshold_;
  const int32_t end_;
  Blocks* blocks_ = nullptr;       ///< null if nothing can be remembered
  double outermost_ = null_value;  ///< of the rows passed since the end of a block
};

}  // namespace quor
