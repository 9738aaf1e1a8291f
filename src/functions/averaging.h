// The steps that averages share: the arithmetic of one bar, apart from where its inputs lie.
#pragma once

#include <cstdint>

#include "core/call.h"
#include "core/data_table.h"
#include "core/value.h"
#include "functions/base_func.h"
#include "functions/series.h"

namespace quor {

constexpr double square(double value) { return value * value; }

/// ((n-1) * prev + 2x) / (n+1), with n of -1 a division by zero.
inline double exponential_step(int64_t n, double x, double prev) {
  return (static_cast<double>(n - 1) * prev + (x + x)) / static_cast<double>(n + 1);
}

/// ((n-m) * prev + m*x) / n; where one of x and prev is null, the other.
double smoothing_step(double x, double prev, int64_t n, int64_t m);

/// What the bars before this one give to an average of `count` bars.
struct WindowSeed {
  double sum = 0.0;      ///< the previous result, or the sum of the window if recomputed
  double leaving = 0.0;  ///< the value that leaves the window at this bar
  int64_t count = 0;     ///< how many bars the window stands for
  bool recomputed = false;
};

/// The seed of the window that ends at `previous_row`: the result that stands there, or, with
/// `force` or where it is null, the sum of the window's values. Each null that a recomputation
/// meets lowers the count by 1, one at the oldest place by 2; without any value the sum is null.
/// Row 0 has no window: sum and leaving value are 0 then, and nothing is recomputed.
WindowSeed window_seed(const DataTable& table, int32_t x_column, int32_t result_column,
                       int64_t previous_row, int64_t count, bool force);

struct AverageStep {
  double value;
  int64_t count;  ///< of the values behind the average, which the next bar needs
};

/// One step of a sliding mean: the previous mean times its count, without the value that leaves and
/// with x, over the new count. Nulls that enter lower the count, nulls that leave raise it.
AverageStep average_step(int64_t count, double x, const WindowSeed& seed);

/// Where a sliding mean finds its series and keeps its results and their counts.
struct AverageColumns {
  int32_t series;
  int32_t result;
  int32_t count;
};

/// A bar of a sliding mean of n values, from the state of the bar before; writes the new state.
/// `count` is the width of the seed's window, and how many values row 0 starts with.
AverageStep sliding_average(DataTable& table, const AverageColumns& columns, int32_t row, double x,
                            int64_t count, int64_t n);

/// A bar of MA(X, N) for a call that keeps the state of it.
double moving_average(const Call& call);

/// Writes the bar's state or result into a column and gives it back.
inline double keep(const Call& call, int32_t column, double value) {
  call.table().set_cell(call.row, column, value);
  return value;
}

}  // namespace quor
