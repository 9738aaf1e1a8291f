// The shape of a word that reduces the last N values of a series to a number.
#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>

#include "core/base_func.h"
#include "core/column_owners.h"
#include "core/columns.h"
#include "core/data_table.h"
#include "functions/averaging.h"
#include "functions/lanes.h"
#include "functions/series.h"
#include "functions/word_steps.h"

namespace quor {

/// A window that lies whole in its column.
struct PlainWindow {
  using Number = double;
  const double* values;
  size_t count;

  size_t size() const { return count; }
  bool empty() const { return count == 0; }
  double operator[](size_t i) const { return values[i]; }
};

/// The windows of neighbouring rows. With `fused` their divisions are `fused_quotient`.
template <typename Part, bool fused>
struct LaneWindow {
  using Number = Lanes<Part>;
  const double* values;  ///< of the first one
  size_t count;
  Divisor divisor;  ///< where they are fused: what `Reduce::divisor` makes of the count

  size_t size() const { return count; }
  bool empty() const { return count == 0; }
  Number operator[](size_t i) const { return lanes_at<Part>(values + i); }
};

template <typename W>
struct NumberOf {
  using type = typename W::Number;
};
template <>
struct NumberOf<Window> {
  using type = double;
};
/// What a reduction of such a window works with: a number, or one for each of its rows.
template <typename W>
using Number = typename NumberOf<W>::type;

template <typename W>
inline constexpr bool is_fused = false;
template <typename Part>
inline constexpr bool is_fused<LaneWindow<Part, true>> = true;

/// x / d for the numbers of a window; d is what a fused one has for its divisor.
template <typename W>
Number<W> quotient(const Number<W>& x, const W& window, double d) {
  if constexpr (is_fused<W>) {
    return fused_quotient(x, window.divisor);
  } else {
    return x / d;
  }
}

/// From which row on a window word of N bars has a value.
enum class Gate : uint8_t {
  full_window,             ///< the first full window
  behind_window,           ///< one bar later; never for an N of 0
  behind_windows_of_four,  ///< the same; never for an N below 4
};

constexpr int64_t opens_at(Gate gate, int32_t n) {
  constexpr int64_t never = INT64_MAX;
  if (gate == Gate::full_window) return int64_t{n} - 1;
  return n == 0 || (gate == Gate::behind_windows_of_four && n < 4) ? never : n;
}

/// The column that holds the series of an argument, with its values over the block stored as the
/// place says; -1 where it isn't there yet or the values can't be had.
inline int32_t series_column_over(const ColumnCall& call, size_t position, SeriesPlace place) {
  const Variable* argument = call.argument(position);
  if (argument == nullptr) return -1;
  int32_t column = argument->column_index;
  if (!argument->has_column()) {
    const Variable& holder = place == SeriesPlace::column_of_call ? call.variable : *argument;
    if (place == SeriesPlace::own_column) return -1;
    column = held_column(holder, 0);
  }
  return column == -1 || call.stored(position, column) == nullptr ? -1 : column;
}

/// All cells of that column, from row 0 on; null for none.
inline const double* series_over(const ColumnCall& call, size_t position, SeriesPlace place) {
  const int32_t column = series_column_over(call, position, place);
  return column == -1 ? nullptr : call.cells(column);
}

/// Rows of windows of one length, one after the other.
struct WindowRows {
  const double* window;  ///< of the first row
  size_t count;
  size_t rows;
  double* results;
  Divisor divisor;
};

/// Takes as many rows as there are lanes at a time; some are left.
template <typename W, typename Reduce>
void reduce_lanes(const Reduce& reduce, WindowRows& left) {
  constexpr size_t lanes = Number<W>::count;
  for (; left.rows >= lanes; left.rows -= lanes, left.window += lanes, left.results += lanes) {
    store(reduce.finish(reduce(W{left.window, left.count, left.divisor})), left.results);
  }
}

template <typename W, typename Reduce>
QUOR_WIDE void reduce_wide_lanes(const Reduce& reduce, WindowRows& left) {
  reduce_lanes<W>(reduce, left);
}

/// Whether divisions by whole numbers may be `fused_quotient` in the windows of these rows; gives
/// them their divisor then.
template <typename Reduce>
bool can_fuse(WindowRows& left) {
  if constexpr (requires { Reduce::longest_fused; }) {
    if (left.count > Reduce::longest_fused ||
        !are_moderate(left.window, left.count - 1 + left.rows))
      return false;
    left.divisor = divisor_of(Reduce::divisor(left.count));
    return true;
  } else {
    return false;
  }
}

/// What `reduce` makes of the windows of `count` values that end at the rows of the block.
template <typename Reduce>
void reduce_rows(const Reduce& reduce, const double* series, Block rows, size_t count,
                 double* results) {
  const double* window = series + rows.first - (static_cast<ptrdiff_t>(count) - 1);
  WindowRows left{window, count, rows.size(), results, {}};
  if constexpr (Reduce::in_lanes) {
    if (is_wide() && can_fuse<Reduce>(left)) {
      reduce_wide_lanes<LaneWindow<Quad, true>>(reduce, left);
    } else if (is_wide()) {
      reduce_wide_lanes<LaneWindow<Quad, false>>(reduce, left);
    }
    reduce_lanes<LaneWindow<Pair, false>>(reduce, left);
  }
  for (; left.rows > 0; --left.rows, ++left.window, ++left.results) {
    *left.results = reduce.finish(reduce(PlainWindow{left.window, left.count}));
  }
}

/// What a word of X and N does around the reduction of its windows.
struct WindowRule {
  Gate gate = Gate::behind_window;
  /// Where X is kept.
  SeriesPlace place = SeriesPlace::own_column;
  bool stores_before_gate = false;  ///< else nothing is evaluated or stored before it
  bool ignores_period_status = false;
  bool ignores_status = false;  ///< of X, too
  bool keeps_result = false;    ///< in the call's result column
};

inline int32_t store_at(SeriesPlace place, const Call& call, Variable& argument, double value) {
  switch (place) {
    case SeriesPlace::column_of_argument:
      return store_in_aux_of_argument(call, argument, value);
    case SeriesPlace::column_of_call:
      return store_in_aux_of_call(call, argument, value);
    default:
      return store_in_own_column(call, argument, value);
  }
}

/// A word of X and N. `Reduce` is made of N, takes a window of one row or of several at once (with
/// `in_lanes`), and finishes the number of each row. With `longest_fused` windows of so many values
/// or fewer may be fused.
template <typename Reduce, WindowRule rule>
class OverWindow : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const final {
    if (call.scan) return Reduce::scan(call);
    double period = null_value;
    const Status status = call.evaluate(1, period);
    if (failed(status) && !rule.ignores_period_status) return status;
    const int32_t n = to_int(period);
    const bool is_open = call.row >= opens_at(rule.gate, n);
    if (!is_open && !rule.stores_before_gate) return call.answer(null_value);
    double x = null_value;
    const Status x_status = call.evaluate(0, x);
    if (failed(x_status) && !rule.ignores_status) return x_status;
    const int32_t column = store_at(rule.place, call, call.argument(0), x);
    if (!is_open) return call.answer(null_value);
    const Reduce reduce(n);
    const double y = reduce.finish(reduce(call.table().window(column, call.row, n)));
    return call.answer(rule.keeps_result ? stored(call, call.variable.column_index, y) : y);
  }

  const double* column(const ColumnCall& call) const final {
    const std::optional<double> period = call.number(1);
    const int32_t n = period ? to_int(*period) : 0;
    if (n < 1) return nullptr;
    const int64_t opens = opens_at(rule.gate, n);
    const int32_t from =
        static_cast<int32_t>(std::clamp<int64_t>(opens, call.rows.first, call.rows.end));
    const Block open{from, call.rows.end};
    if (open.size() == 0 && !rule.stores_before_gate) return call.everywhere(null_value);
    const ColumnCall evaluated = call.over(rule.stores_before_gate ? call.rows : open);
    const double* series = series_over(evaluated, 0, rule.place);
    if (series == nullptr) return nullptr;
    if (open.size() == 0) return call.everywhere(null_value);
    if (rule.keeps_result && (!call.variable.has_column() || open != call.rows)) return nullptr;
    double* results =
        rule.keeps_result ? call.results_of(call.variable.column_index) : call.scratch();
    double* first_open = std::fill_n(results, call.size() - open.size(), null_value);
    reduce_rows(Reduce(n), series, open, static_cast<size_t>(n), first_open);
    return rule.keeps_result ? call.keep(call.variable.column_index, results) : results;
  }

  ColumnTraits column_traits() const final {
    return {.starts_late = !rule.stores_before_gate, .series = rule.place};
  }
};

}  // namespace quor
