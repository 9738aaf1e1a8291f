#include "functions/averaging.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "core/call.h"
#include "core/column_owners.h"
#include "core/model.h"
#include "functions/fused_quotient.h"
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
  double count_before;             ///< of the bar before it
  const double* x;                 ///< these three from there on
  double* results;                 ///< behind that of the bar before
  double* counts;                  ///< null as long as they all are `count_before`

  int64_t n() const { return to_int(period); }
  /// The bars from a place on that pass no null have means of a count that stands still.
  bool is_steady(size_t place) const {
    const int64_t row = int64_t{first} + static_cast<int64_t>(place);
    return n() >= 1 && row >= n() && count_at(place) > 0 && !is_null(state_before(place).result);
  }
  /// How many values the window before a place has.
  int32_t count_at(size_t place) const { return to_int(state_before(place).count); }
  AverageState state_before(size_t place) const {
    const bool has_count = counts != nullptr && place > 0;
    return {results[static_cast<ptrdiff_t>(place) - 1],
            has_count ? counts[place - 1] : count_before};
  }
};

/// Where the values lie that leave the window at a place and behind it.
const double* leaving_at(const MeanLane& lane, size_t place) {
  return &lane.series[static_cast<size_t>(lane.first - lane.n()) + place];
}

/// Means of windows through which no null goes, for as many bars as there are in a row from a place
/// on.
///
/// A bar starts from the mean before it times its count, which mostly is the very total that was
/// divided. The next bar goes on with that, and the processor divides meanwhile; it only waits for
/// a product that turns out to differ.
size_t steady_means(const std::array<MeanLane, 1>& lanes, size_t place, size_t size) {
  const MeanLane& lane = lanes.front();
  const double count = lane.count_at(place);
  const double* leaving = leaving_at(lane, place);
  double total = lane.state_before(place).result * count;
  for (; place < size; ++place, ++leaving) {
    total = total - *leaving + lane.x[place];
    const double mean = total / count;
    const double product = mean * count;
    if (product != total) [[unlikely]] {
      if (is_null(product)) return place;
      asm volatile("");  // or the compiler chooses without a branch, and so always waits
      total = product;
    }
    lane.results[place] = mean;
  }
  return place;
}

struct PlainQuotient {
  static constexpr bool ends_with_null = true;
  double count;
  double operator()(double total) const { return total / count; }
};
/// What it makes of nulls isn't taken.
struct FusedQuotient {
  static constexpr bool ends_with_null = false;
  double count;
  Divisor divisor;
  double operator()(double total) const { return fused_quotient(total, divisor); }
};

/// Lanes beside each other wait for all of their divisions at once.
template <typename Quotient, size_t count>
size_t means_beside(std::array<MeanLane, count> lanes, std::array<Quotient, count> quotients,
                    size_t place, size_t end) {
  double means[count];
  const double* leaving[count];
  for (size_t k = 0; k < count; ++k) {
    means[k] = lanes[k].results[static_cast<ptrdiff_t>(place) - 1];
    leaving[k] = leaving_at(lanes[k], place);
  }
  for (const size_t begin = place; place < end; ++place) {
    bool meets_null = false;
#pragma GCC unroll 4
    for (size_t k = 0; k < count; ++k) {
      const double sum = means[k] * quotients[k].count;
      means[k] = quotients[k](sum - leaving[k][place - begin] + lanes[k].x[place]);
      lanes[k].results[place] = means[k];
      meets_null |= Quotient::ends_with_null && is_null(means[k]);
    }
    if (meets_null) break;
  }
  return place;
}

/// False where a result leaves a doubt.
template <size_t count>
bool run_fused_means(const std::array<MeanLane, count>& lanes,
                     const std::array<FusedQuotient, count>& quotients, size_t first, size_t end) {
  run_wide([&] { means_beside(lanes, quotients, first, end); });
  return std::ranges::all_of(lanes, [first, end](const MeanLane& lane) {
    return are_moderate(lane.results + first, end - first);
  });
}

/// The same for several lanes; they end with the first null of any.
template <size_t count>
size_t steady_means(const std::array<MeanLane, count>& lanes, size_t place, size_t size) {
  std::array<PlainQuotient, count> plain;
  std::array<FusedQuotient, count> fused;
  for (size_t k = 0; k < count; ++k) {
    const int32_t values = lanes[k].count_at(place);
    plain[k] = {static_cast<double>(values)};
    fused[k] = {plain[k].count, divisor_of(static_cast<uint64_t>(values))};
  }
  for (size_t end = place; place < size; place = end) {
    end = std::min(place + fused_strip, size);
    if (is_wide() && run_fused_means(lanes, fused, place, end)) continue;
    const size_t reached = means_beside(lanes, plain, place, end);
    if (reached < end) return reached;
  }
  return size;
}

/// The bars from `place` on; those before stand.
void finish_means(const MeanLane& lane, size_t place, size_t size) {
  while (place < size) {
    if (lane.is_steady(place)) {
      const size_t end = steady_means(std::array{lane}, place, size);
      std::fill(lane.counts + place, lane.counts + end, lane.count_at(place));
      place = end;
      if (place == size) return;
    }
    const int32_t row = lane.first + static_cast<int32_t>(place);
    const int64_t n = lane.n();
    const AverageState before = lane.state_before(place);
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

MeanLane lane_of(const ColumnCall& call) {
  const int32_t series = call.argument(0)->column_index;
  const double* x = call.stored(0, series);
  if (x == nullptr) return {};
  const int64_t before = int64_t{call.rows.first} - 1;
  return {.period = *call.number(1),
          .series = call.table().cells(series),
          .first = call.rows.first,
          .count_before = call.table().cell(before, call.variable.aux_column_indexes[0]),
          .x = x,
          .results = call.results_of(call.variable.column_index),
          .counts = nullptr};
}

/// Works out the bars behind the first `done` ones, whose means are there, and writes all. Gives
/// the cells of the means.
const double* finish(const ColumnCall& call, MeanLane lane, size_t done) {
  const int32_t column = call.variable.aux_column_indexes[0];
  const double count = lane.count_at(0);
  if (done == call.size()) {
    call.write(column, count);
  } else {
    lane.counts = call.results_of(column);
    std::fill_n(lane.counts, done, count);
    finish_means(lane, done, call.size());
    call.write(column, lane.counts);
  }
  return call.keep(call.variable.column_index, lane.results);
}

}  // namespace

bool can_average(const ColumnCall& call) {
  const Variable* argument = call.argument(0);
  return call.number(1) && argument != nullptr && argument->has_column() &&
         call.variable.has_column() && !call.variable.aux_column_indexes.empty();
}

const double* moving_average(const ColumnCall& call) {
  if (!can_average(call)) return nullptr;
  const MeanLane lane = lane_of(call);
  if (lane.x == nullptr) return nullptr;
  const size_t done = lane.is_steady(0) ? steady_means(std::array{lane}, 0, call.size()) : 0;
  return finish(call, lane, done);
}

bool moving_averages(std::span<const ColumnCall> calls) {
  return in_groups(calls, lane_of, [](auto group, const auto& lanes) {
    const bool all_steady =
        std::ranges::all_of(lanes, [](const MeanLane& lane) { return lane.is_steady(0); });
    const size_t done = all_steady ? steady_means(lanes, 0, group.front().size()) : 0;
    for (size_t k = 0; k < lanes.size(); ++k) finish(group[k], lanes[k], done);
  });
}

}  // namespace quor
