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

AverageStep sliding_average(DataTable& table, const AverageColumns& columns, int32_t row, double x,
                            int64_t count, int64_t n) {
  const int64_t before = int64_t{row} - 1;
  const AverageState state{table.cell(before, columns.result), table.cell(before, columns.count)};
  const AverageStep step = sliding_average(table.cells(columns.series), state, row, x, count, n);
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

namespace {

/// Means of windows through which no null goes, so that the count of values stands still: as many
/// as there are in a row. `leaving` and `x` belong to the first of `size` bars.
size_t steady_means(double mean, double count, const double* leaving, const double* x, size_t size,
                    double* means) {
  for (size_t i = 0; i < size; ++i) {
    mean = (mean * count - leaving[i] + x[i]) / count;
    if (is_null(mean)) return i;
    means[i] = mean;
  }
  return size;
}

}  // namespace

const double* moving_average(const ColumnCall& call) {
  const std::optional<double> period = call.number(1);
  const Variable* argument = call.argument(0);
  const Variable& variable = call.variable;
  const bool has_columns = argument != nullptr && argument->has_column() && variable.has_column() &&
                           !variable.aux_column_indexes.empty();
  if (!period || !has_columns) return nullptr;
  const double* x = call.stored(0, argument->column_index);
  if (x == nullptr) return nullptr;
  double* results = call.overwrite(variable.column_index);
  double* counts = call.overwrite(variable.aux_column_indexes[0]);
  const std::span<const double> series = call.table().cells(argument->column_index);
  const int64_t n = to_int(*period);
  AverageState state{results[-1], counts[-1]};
  for (size_t i = 0; i < call.size(); ++i) {
    int32_t row = call.rows.first + static_cast<int32_t>(i);
    const int32_t known = to_int(state.count);
    if (n >= 1 && row >= n && known > 0 && !is_null(state.result)) {
      const size_t passed = steady_means(state.result, known, series.data() + row - n, x + i,
                                         call.size() - i, results + i);
      std::fill_n(counts + i, passed, known);
      i += passed;
      row += static_cast<int32_t>(passed);
      if (i == call.size()) break;
      if (passed > 0) state = {results[i - 1], counts[i - 1]};
    }
    const AverageState before = state;
    state = {null_value, *period};
    if (n >= 1 && row >= n - 1) {
      const AverageStep step = sliding_average(series, before, row, x[i], n, n);
      state = {step.value, static_cast<double>(step.count)};
    }
    results[i] = state.result;
    counts[i] = state.count;
  }
  return results;
}

}  // namespace quor
