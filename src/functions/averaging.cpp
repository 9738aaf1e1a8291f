#include "functions/averaging.h"

#include <algorithm>
#include <numeric>
#include <span>

#include "core/call.h"
#include "core/column_owners.h"
#include "core/model.h"
#include "functions/series.h"

namespace quor {
namespace {

/// Adds up the values that are not null, oldest first, and counts the nulls.
struct CheckedSum {
  double sum = 0.0;
  int64_t nulls = 0;
};

CheckedSum checked_sum(std::span<const double> values) {
  CheckedSum checked{std::accumulate(values.begin(), values.end(), 0.0)};
  // Only a null makes no number of a sum of numbers, save for infinities.
  if (!is_null(checked.sum)) return checked;
  checked.sum = 0.0;
  for (const double value : values) {
    if (is_null(value)) {
      ++checked.nulls;
    } else {
      checked.sum += value;
    }
  }
  return checked;
}

/// The values of the rows `first` to `last`, as far as there are any.
std::span<const double> existing(std::span<const double> values, int64_t first, int64_t last) {
  const int64_t end = std::min<int64_t>(last + 1, std::ssize(values));
  if (end <= first) return {};
  return values.subspan(static_cast<size_t>(first), static_cast<size_t>(end - first));
}

/// Rows that aren't there count as nulls.
WindowSeed recompute_seed(std::span<const double> x, int64_t previous_row, int64_t count) {
  const int64_t first = std::max<int64_t>(previous_row - count + 1, 0);
  const int64_t rows = previous_row - first + 1;
  if (rows <= 0) return {null_value, 0.0, std::max<int64_t>(count, 0), true};
  const std::span<const double> values = existing(x, first, previous_row);
  const CheckedSum checked = checked_sum(values);
  const int64_t numbers = std::ssize(values) - checked.nulls;
  const double leaving = values.empty() ? null_value : values.front();
  const int64_t left = count - (rows - numbers) - (is_null(leaving) ? 1 : 0);
  return {numbers > 0 ? checked.sum : null_value, leaving, std::max<int64_t>(left, 0), true};
}

/// X's own column, reserved on X itself.
int32_t column_on_argument(Variable& argument) {
  if (!argument.has_column() && argument.kind != VariableKind::missing) {
    reserve_columns(argument, 1);
    hand_over_column(argument, 0, argument);
  }
  return argument.column_index;
}

/// The first auxiliary column holds the count. A call without a column of its own takes a second
/// one for the results.
void reserve_average_columns(Variable& variable) {
  if (!variable.has_column()) {
    if (variable.aux_column_ids.empty()) reserve_columns(variable, 2);
    hand_over_column(variable, 1, variable);
  } else if (variable.aux_column_ids.empty()) {
    reserve_columns(variable, 1);
  }
}

}  // namespace

double smoothing_step(double x, double prev, int64_t n, int64_t m) {
  if (is_null(x)) return prev;
  if (is_null(prev)) return x;
  return (static_cast<double>(n - m) * prev + static_cast<double>(m) * x) / static_cast<double>(n);
}

WindowSeed window_seed(const DataTable& table, int32_t x_column, int32_t result_column,
                       int64_t previous_row, int64_t count, bool force) {
  if (previous_row < 0) return {.count = count};
  const double previous = force ? null_value : table.cell(previous_row, result_column);
  if (is_null(previous)) return recompute_seed(table.cells(x_column), previous_row, count);
  WindowSeed seed{.sum = previous, .count = count};
  if (previous_row >= count - 1) seed.leaving = table.cell(previous_row - count + 1, x_column);
  return seed;
}

AverageStep average_step(int64_t count, double x, const WindowSeed& seed) {
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
    sum = (is_null(sum) ? 0.0 : sum) + x;
  }
  const int64_t new_count = count + delta;
  return {new_count > 0 ? sum / static_cast<double>(new_count) : null_value, new_count};
}

[[gnu::flatten]] AverageStep sliding_average(DataTable& table, const AverageColumns& columns,
                                             int32_t row, double x, int64_t count, int64_t n) {
  const int64_t previous_row = static_cast<int64_t>(row) - 1;
  const WindowSeed seed =
      window_seed(table, columns.series, columns.result, previous_row, count, false);
  int64_t known = row == 0 ? count : to_int(table.cell(previous_row, columns.count));
  if (seed.count != n) known = seed.count;
  const AverageStep step = average_step(known, x, seed);
  table.set_cell(row, columns.result, step.value);
  table.set_cell(row, columns.count, static_cast<double>(step.count));
  return step;
}

double moving_average(const Call& call) {
  double period = null_value;
  double x = null_value;
  ignore_status(call.evaluate(1, period));
  ignore_status(call.evaluate(0, x));

  const int32_t series = column_on_argument(call.argument(0));
  reserve_average_columns(call.variable);
  const AverageColumns columns{series, call.variable.column_index, held_column(call.variable, 0)};
  DataTable& table = call.table();
  const int64_t n = to_int(period);
  double result = null_value;
  if (n >= 1 && call.row >= n - 1) {
    result = sliding_average(table, columns, call.row, x, n, n).value;
  } else {
    table.set_cell(call.row, columns.result, null_value);
    table.set_cell(call.row, columns.count, period);
  }
  table.set_cell(call.row, columns.series, x);
  return result;
}

}  // namespace quor
