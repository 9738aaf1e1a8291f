// The steps that averages share: the arithmetic of one bar, apart from where its inputs lie.
#pragma once

#include <cstdint>
#include <span>

#include "core/base_func.h"
#include "core/call.h"
#include "core/columns.h"
#include "core/data_table.h"
#include "core/value.h"
#include "functions/series.h"

namespace quor {

template <typename T>
constexpr T square(const T& value) {
  return value * value;
}

/// ((n-1) * prev + 2x) / (n+1), with n of -1 a division by zero.
inline double exponential_step(int64_t n, double x, double prev) {
  return (static_cast<double>(n - 1) * prev + (x + x)) / static_cast<double>(n + 1);
}

/// ((n-m) * prev + m*x) / n; where one of x and prev is null, the other.
inline double smoothing_step(double x, double prev, int64_t n, int64_t m) {
  if (is_null(x)) return prev;
  if (is_null(prev)) return x;
  return (static_cast<double>(n - m) * prev + static_cast<double>(m) * x) / static_cast<double>(n);
}

/// What the bars before this one give to an average of `count` bars.
struct WindowSeed {
  double sum = 0.0;      ///< the previous result, or the sum of the window if recomputed
  double leaving = 0.0;  ///< the value that leaves the window at this bar
  int64_t count = 0;     ///< how many bars the window stands for
  bool recomputed = false;
};

/// The seed where the window's values have to be added up again: each null lowers the count by 1,
/// one at the oldest place by 2; without any value the sum is null. Rows that aren't there count as
/// nulls.
WindowSeed recompute_seed(std::span<const double> x, int64_t previous_row, int64_t count);

/// The seed of the window of `x`, a whole column, that ends at `previous_row`: the previous result
/// or, where that is null, the sum of the window's values. Row 0 has no window: sum and leaving
/// value are 0 then, and nothing is recomputed.
inline WindowSeed window_seed(std::span<const double> x, double previous, int64_t previous_row,
                              int64_t count) {
  if (previous_row < 0) return {.count = count};
  if (is_null(previous)) return recompute_seed(x, previous_row, count);
  WindowSeed seed{.sum = previous, .count = count};
  if (previous_row < count - 1) return seed;
  const auto leaving = static_cast<size_t>(previous_row - count + 1);
  seed.leaving = leaving < x.size() ? x[leaving] : null_value;
  return seed;
}

struct AverageStep {
  double value;
  int64_t count;  ///< of the values behind the average, which the next bar needs
};

/// One step of a sliding mean: the previous mean times its count, without the value that leaves and
/// with x, over the new count. Nulls that enter lower the count, nulls that leave raise it.
inline AverageStep average_step(int64_t count, double x, const WindowSeed& seed) {
  double sum = seed.recomputed ? seed.sum : seed.sum * static_cast<double>(count);
  int64_t delta = 0;
  if (is_null(seed.leaving)) {
    delta = 1;
  } else if (!seed.recomputed) {
    sum -= seed.leaving;
  }
  if (is_null(x)) {
    delta = is_null(seed.leaving) ? 0 : -1;
  } else {
    if (is_null(sum)) [[unlikely]]
      sum = 0.0;
    sum += x;
  }
  const int64_t new_count = count + delta;
  if (new_count <= 0) [[unlikely]]
    return {null_value, new_count};
  return {sum / static_cast<double>(new_count), new_count};
}

/// What a sliding mean has left at the bar before: its result and the count behind it.
struct AverageState {
  double result;
  double count;
};

/// A bar of a sliding mean of n values over `series`, a whole column. `count` is the width of the
/// seed's window, and how many values row 0 starts with.
inline AverageStep sliding_average(std::span<const double> series, const AverageState& before,
                                   int32_t row, double x, int64_t count, int64_t n) {
  const WindowSeed seed = window_seed(series, before.result, int64_t{row} - 1, count);
  int64_t known = row == 0 ? count : to_int(before.count);
  if (seed.count != n) known = seed.count;
  return average_step(known, x, seed);
}

/// Where a sliding mean finds its series and keeps its results and their counts.
struct AverageColumns {
  int32_t series;
  int32_t result;
  int32_t count;
};

/// The same with the state in columns of the table.
AverageStep sliding_average(DataTable& table, const AverageColumns& columns, int32_t row, double x,
                            int64_t count, int64_t n);

/// A bar of MA(X, N) for a call that keeps the state of it.
double moving_average(const Call& call);
const double* moving_average(const ColumnCall& call);
/// Whether the call's columns are there.
bool can_average(const ColumnCall& call);
/// The same for several such calls side by side; false where one is declined.
bool moving_averages(std::span<const ColumnCall> calls);

/// Writes the bar's state or result into a column and gives it back.
inline double stored(const Call& call, int32_t column, double value) {
  call.table().set_cell(call.row, column, value);
  return value;
}

}  // namespace quor
