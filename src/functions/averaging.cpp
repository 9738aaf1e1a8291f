#include "functions/averaging.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "core/call.h"
#include "core/column_owners.h"
#include "core/model.h"
#include "functions/series.h"
#include "functions/side_by_side.h"

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

/// A call of a sliding mean over a block.
struct MeanLane {
  double period;
  std::span<const double> series;  ///< a whole column
  int32_t first;                   ///< the row that the block begins with
  const double* x;                 ///< these three from there on
  double* results;
  double* counts;

  int64_t n() const { return to_int(period); }
  /// The bars from a place on that pass no null have means of a count that stands still.
  bool is_steady(size_t place) const {
    const int64_t row = int64_t{first} + static_cast<int64_t>(place);
    return n() >= 1 && row >= n() && to_int(*counts_before(place)) > 0 &&
           !is_null(results[static_cast<ptrdiff_t>(place) - 1]);
  }
  const double* counts_before(size_t place) const {
    return counts + static_cast<ptrdiff_t>(place) - 1;
  }
};

/// Means of windows through which no null goes, for as many bars as there are in a row from a place
/// on. Several lanes side by side end with the first null of any.
template <size_t count>
size_t steady_means(const std::array<MeanLane, count>& lanes, size_t place, size_t size) {
  double means[count];
  double counts[count];
  const double* leaving[count];
  for (size_t k = 0; k < count; ++k) {
    const MeanLane& lane = lanes[k];
    means[k] = lane.results[static_cast<ptrdiff_t>(place) - 1];
    counts[k] = to_int(*lane.counts_before(place));
    leaving[k] = &lane.series[static_cast<size_t>(lane.first - lane.n()) + place];
  }
  for (const size_t begin = place; place < size; ++place) {
    bool meets_null = false;
#pragma GCC unroll 4
    for (size_t k = 0; k < count; ++k) {
      means[k] = (means[k] * counts[k] - leaving[k][place - begin] + lanes[k].x[place]) / counts[k];
      meets_null |= is_null(means[k]);
    }
    if (meets_null) break;
#pragma GCC unroll 4
    for (size_t k = 0; k < count; ++k) lanes[k].results[place] = means[k];
  }
  return place;
}

/// The bars from `place` on; those before stand.
void finish_means(const MeanLane& lane, size_t place, size_t size) {
  while (place < size) {
    if (lane.is_steady(place)) {
      const size_t end = steady_means<1>({lane}, place, size);
      std::fill(lane.counts + place, lane.counts + end, to_int(*lane.counts_before(place)));
      place = end;
      if (place == size) return;
    }
    const int32_t row = lane.first + static_cast<int32_t>(place);
    const int64_t n = lane.n();
    const AverageState before{lane.results[static_cast<ptrdiff_t>(place) - 1],
                              *lane.counts_before(place)};
    AverageState state{null_value, lane.period};
    if (n >= 1 && row >= n - 1) {
      const AverageStep step = sliding_average(lane.series, before, row, lane.x[place], n, n);
      state = {step.value, static_cast<double>(step.count)};
    }
    lane.results[place] = state.result;
    lane.counts[place] = state.count;
    ++place;
  }
}

MeanLane lane_of(const ColumnCall& call, const double* x, double* results, double* counts) {
  return {*call.number(1), call.table().cells(call.argument(0)->column_index),
          call.rows.first, x,
          results,         counts};
}

}  // namespace

bool can_average(const ColumnCall& call) {
  const Variable* argument = call.argument(0);
  return call.number(1) && argument != nullptr && argument->has_column() &&
         call.variable.has_column() && !call.variable.aux_column_indexes.empty();
}

const double* moving_average(const ColumnCall& call) {
  const double* x = can_average(call) ? call.stored(0, call.argument(0)->column_index) : nullptr;
  if (x == nullptr) return nullptr;
  double* results = call.overwrite(call.variable.column_index);
  double* counts = call.overwrite(call.variable.aux_column_indexes[0]);
  finish_means(lane_of(call, x, results, counts), 0, call.size());
  return results;
}

bool moving_averages(std::span<const ColumnCall> calls) {
  const auto lane_of_own = [](const ColumnCall& call) {
    return lane_of(call, call.stored(0, call.argument(0)->column_index),
                   call.own_cells(call.variable.column_index),
                   call.own_cells(call.variable.aux_column_indexes[0]));
  };
  const size_t size = calls.front().size();
  return in_groups(calls, lane_of_own, [size](const auto& lanes) {
    const bool all_steady =
        std::ranges::all_of(lanes, [](const MeanLane& lane) { return lane.is_steady(0); });
    const size_t end = all_steady ? steady_means(lanes, 0, size) : 0;
    for (const MeanLane& lane : lanes) {
      std::fill(lane.counts, lane.counts + end, to_int(*lane.counts_before(0)));
      finish_means(lane, end, size);
    }
  });
}

}  // namespace quor
