#include "functions/averaging.h"

#include <algorithm>

#include "core/model.h"
#include "functions/series.h"

namespace quor {
namespace {

WindowSeed recompute_seed(const DataTable& table, int32_t x_column, int64_t previous_row,
                          int64_t count) {
  WindowSeed seed{.count = count, .recomputed = true};
  const int64_t start = std::max<int64_t>(previous_row - count + 1, 0);
  // Rows behind the table are nulls that needn't be visited.
  const int64_t stored = std::min<int64_t>(previous_row, table.row_count() - 1);
  if (start <= previous_row) {
    seed.leaving = cell_at(table, start, x_column);
    if (is_null(seed.leaving)) --seed.count;
    seed.count -= previous_row - std::max(stored, start - 1);
  }
  if (start > stored) {
    seed.sum = null_value;
    seed.count = std::max<int64_t>(seed.count, 0);
    return seed;
  }
  const auto size = static_cast<int32_t>(stored - start + 1);
  const Window window = table.window(x_column, static_cast<int32_t>(stored), size);
  int64_t nulls = 0;
  for (size_t i = 0; i < window.size(); ++i) {
    if (is_null(window[i])) {
      ++nulls;
    } else {
      seed.sum += window[i];
    }
  }
  seed.count = std::max<int64_t>(seed.count - nulls, 0);
  if (nulls == size) seed.sum = null_value;
  return seed;
}

/// X's own column, reserved on X itself.
int32_t column_on_argument(Variable& argument) {
  if (!argument.has_column() && argument.kind != VariableKind::missing) {
    argument.reserve_aux_columns(1);
    adopt_aux_column(argument, argument, 0);
  }
  return argument.column_index;
}

/// The first auxiliary column holds the count. A call without a column of its own takes a second
/// one for the results.
void reserve_average_columns(Variable& variable) {
  if (!variable.has_column()) {
    if (variable.aux_column_ids.empty()) variable.reserve_aux_columns(2);
    adopt_aux_column(variable, variable, 1);
  } else if (variable.aux_column_ids.empty()) {
    variable.reserve_aux_columns(1);
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
  const double previous = cell_at(table, previous_row, result_column);
  if (force || is_null(previous)) return recompute_seed(table, x_column, previous_row, count);
  WindowSeed seed{.sum = previous, .count = count};
  if (previous_row >= count - 1) seed.leaving = cell_at(table, previous_row - count + 1, x_column);
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
  int64_t known = row == 0 ? count : to_int(cell_at(table, previous_row, columns.count));
  if (seed.count != n) known = seed.count;
  const AverageStep step = average_step(known, x, seed);
  table.set_cell(row, columns.result, step.value);
  table.set_cell(row, columns.count, static_cast<double>(step.count));
  return step;
}

double moving_average(const Call& call) {
  double period = null_value;
  double x = null_value;
  call.evaluate(1, period);
  call.evaluate(0, x);

  const int32_t series = column_on_argument(call.argument(0));
  reserve_average_columns(call.variable);
  const AverageColumns columns{series, call.variable.column_index, aux_column(call.variable, 0)};
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

int32_t aux_column(const Variable& variable, size_t position) {
  return position < variable.aux_column_indexes.size() ? variable.aux_column_indexes[position] : -1;
}

void adopt_aux_column(Variable& variable, const Variable& holder, size_t position) {
  if (position >= holder.aux_column_ids.size()) return;
  variable.take_aux_column(holder, position);
}

int32_t result_column(const Call& call) {
  Variable& variable = call.variable;
  if (!variable.has_column()) {
    variable.reserve_aux_columns(1);
    adopt_aux_column(variable, variable, 0);
  }
  return variable.column_index;
}

double keep(const Call& call, int32_t column, double value) {
  call.table().set_cell(call.row, column, value);
  return value;
}

}  // namespace quor
