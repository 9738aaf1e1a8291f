// The greatest and the smallest value of a window.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "core/data_table.h"
#include "platform/processor.h"

namespace quor {

enum class Extreme { greatest, smallest };

/// Whether `a` lies further out than `b`; false for nulls and for equal values.
template <Extreme extreme>
constexpr bool beats(double a, double b) {
  return extreme == Extreme::greatest ? a > b : a < b;
}

/// Makes `outermost` the outer one of two values; a null counts as none.
template <Extreme extreme>
void take_outer(double& outermost, double value) {
  if (outermost != outermost || beats<extreme>(value, outermost)) outermost = value;
}

/// Where the outermost of the first `count` values stands, the oldest of equal ones. A null is
/// passed over, except at the oldest place, where it stays. 0 for nothing to search.
template <Extreme extreme>
size_t place_of_extreme(const Window& window, size_t count) {
  size_t place = 0;
  if (count == 0) return place;
  double outermost = window[0];
  for (size_t i = 1; i < count; ++i) {
    if (!beats<extreme>(window[i], outermost)) continue;
    outermost = window[i];
    place = i;
  }
  return place;
}

/// The one of two values that lies further out; `older` for equal ones. Numbers, infinities too.
template <Extreme extreme>
constexpr double outer(double older, double newer) {
  return beats<extreme>(newer, older) ? newer : older;
}

/// What no value lies further in than.
template <Extreme extreme>
inline constexpr double innermost = extreme == Extreme::greatest
                                        ? -std::numeric_limits<double>::infinity()
                                        : std::numeric_limits<double>::infinity();

/// The extremes of the windows from row 0 to each of the rows from `first` up to `end`.
template <Extreme extreme>
void growing_extremes(const double* series, int32_t first, int32_t end, double* results) {
  double outermost = series[0];
  for (int32_t row = 0; row < end; ++row) {
    if (beats<extreme>(series[row], outermost)) outermost = series[row];
    if (row >= first) results[row - first] = outermost;
  }
}

/// For each of some windows the extremes of two parts that cover it.
struct CoveredWindows {
  const double* older;
  const double* newer;
};

/// Of `count` windows of n numbers, the first of which begins at `numbers`, which are written over.
/// By doubling: of two parts half as long or longer, each covered so itself, twice in one pass as
/// long as that goes.
template <Extreme extreme>
CoveredWindows cover_by_halves(double* numbers, size_t n, size_t count) {
  size_t size = count + n - 1;
  size_t width = 1;
  for (; 4 * width <= n; width *= 4) {
    size -= 3 * width;
    QUOR_ROWS_APART
    for (size_t i = 0; i < size; ++i) {
      const double older = outer<extreme>(numbers[i], numbers[i + width]);
      const double newer = outer<extreme>(numbers[i + 2 * width], numbers[i + 3 * width]);
      numbers[i] = outer<extreme>(older, newer);
    }
  }
  for (; 2 * width <= n; width *= 2) {
    size -= width;
    QUOR_ROWS_APART
    for (size_t i = 0; i < size; ++i) numbers[i] = outer<extreme>(numbers[i], numbers[i + width]);
  }
  return {numbers, numbers + n - width};
}

/// The same after van Herk, Gil and Werman: of stretches of n numbers, one behind the other, a
/// window covers the end of one and the beginning of the next. `ends` has room for `count`.
template <Extreme extreme>
CoveredWindows cover_by_stretches(double* numbers, size_t n, size_t count, double* ends) {
  for (size_t begin = 0; begin < count; begin += n) {
    double outermost = innermost<extreme>;
    size_t i = begin + n;
    for (; i > count; --i) outermost = outer<extreme>(numbers[i - 1], outermost);
    for (; i > begin; --i) ends[i - 1] = outermost = outer<extreme>(numbers[i - 1], outermost);
  }
  const size_t size = count + n - 1;
  for (size_t begin = 0; begin < size; begin += n) {
    double outermost = innermost<extreme>;
    const size_t end = std::min(begin + n, size);
    for (size_t i = begin; i < end; ++i) {
      numbers[i] = outermost = outer<extreme>(outermost, numbers[i]);
    }
  }
  return {ends, numbers + n - 1};
}

/// The extremes of `count` windows of n values, the first of which begins at `values`, as
/// `place_of_extreme` has them, and exact, since each is one of the values, however they are
/// grouped. `parts` has room for the values of all windows.
template <Extreme extreme>
void window_extremes(const double* values, size_t n, size_t count, double* results, double* parts) {
  constexpr size_t long_window = 256;  // from here on the number of halvings tells
  wherever_wide([=] {
    const size_t size = count + n - 1;
    for (size_t i = 0; i < size; ++i) {
      parts[i] = values[i] == values[i] ? values[i] : innermost<extreme>;
    }
    const auto [older, newer] = n < long_window
                                    ? cover_by_halves<extreme>(parts, n, count)
                                    : cover_by_stretches<extreme>(parts, n, count, results);
    QUOR_ROWS_APART
    for (size_t i = 0; i < count; ++i) {
      const double outermost = outer<extreme>(older[i], newer[i]);
      results[i] = values[i] == values[i] ? outermost : values[i];
    }
  });
}

/// The rows of a window that can still come to hold its extreme: a monotone queue. From bar to bar
/// one row joins and some leave, so that a bar costs the same whatever the size of the window.
template <Extreme extreme>
class ExtremeRows {
 public:
  /// The row of the extreme of the rows from `first` to `last`, as `place_of_extreme` has it; -1 if
  /// their values can't be taken as known. Both are rows of the table, and the column is there.
  /// With `catches_up` rows that have been left out count as known.
  int32_t find(const DataTable& table, int32_t column, int32_t first, int32_t last,
               bool catches_up) {
    if (column != column_) start_over(column);
    if (!pass(last, last + 1) && !catches_up) return -1;
    follow(table, first, last);
    const double oldest = table.cell(first, column);
    if (oldest != oldest || first == last) return first;
    if (head_ == rows_.size()) return -1;
    const int32_t best = rows_[head_];
    return beats<extreme>(table.cell(last, column), table.cell(best, column)) ? last : best;
  }

  /// To be told of rows that have been evaluated one after the other. False behind a row that was
  /// left out.
  bool pass(int32_t first, int32_t end) {
    if (first > passed_) return false;
    passed_ = std::max(passed_, end);
    return true;
  }
  /// The rows before this one have been passed.
  int32_t passed() const { return passed_; }

  void forget_window() {
    rows_.clear();
    head_ = 0;
    end_ = 0;
  }

  /// Forgets a row and those behind it.
  void cut(int32_t row) {
    passed_ = std::min(passed_, row);
    if (end_ > row) forget_window();
  }

 private:
  void start_over(int32_t column) {
    column_ = column;
    passed_ = 0;
    forget_window();
  }

  /// Takes in the rows before the last one, whose value may still change.
  void follow(const DataTable& table, int32_t first, int32_t last) {
    const bool holds = end_ <= last && first_ <= first && first <= end_;
    if (!holds) {
      forget_window();
      end_ = first;
    }
    first_ = first;
    while (head_ < rows_.size() && rows_[head_] < first) ++head_;
    for (; end_ < last; ++end_) push(table, end_);
  }

  void push(const DataTable& table, int32_t row) {
    const double value = table.cell(row, column_);
    if (value != value) return;
    if (rows_.capacity() == 0) rows_.reserve(least_rows);
    while (head_ < rows_.size() && beats<extreme>(value, table.cell(rows_.back(), column_))) {
      rows_.pop_back();
    }
    // Rows that have left make room, so that the memory stays as large as two windows.
    if (rows_.size() == rows_.capacity() && head_ > rows_.size() / 2) {
      rows_.erase(rows_.begin(), rows_.begin() + static_cast<ptrdiff_t>(head_));
      head_ = 0;
    }
    rows_.push_back(row);
  }

  static constexpr size_t least_rows = 16;

  int32_t column_ = -1;
  int32_t passed_ = 0;
  int32_t first_ = 0;
  int32_t end_ = 0;            ///< the row behind the last one taken in
  std::vector<int32_t> rows_;  ///< from `head_` on ascending, their values from the extreme inward
  size_t head_ = 0;
};

/// The value at that place; 0.0 for nothing to search.
template <Extreme extreme>
double extreme_of(const Window& window, size_t count) {
  return count == 0 ? 0.0 : window[place_of_extreme<extreme>(window, count)];
}

}  // namespace quor
