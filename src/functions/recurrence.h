// The shape of a word whose value at a bar comes from the value of the bar before.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "core/columns.h"
#include "functions/averaging.h"
#include "functions/side_by_side.h"
#include "functions/word_steps.h"

namespace quor {

/// A word of X and parameters. `Step` says what is its own:
///
///     static Status scan(const Call& call);
///     static constexpr size_t parameters;   // the arguments behind X
///     static constexpr bool ignores_status; // of its arguments
///     bool take(size_t position, double value, const DataTable& table);
///                                           // a parameter, in order; false: the bar is null
///     double first(double x) const;         // the value at row 0
///     double next(double x, double prev) const;
///
/// The value is kept in the call's result column. A bar that a parameter makes null writes nothing.
template <typename Step>
class Recurrence : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const final {
    if (call.scan) return Step::scan(call);
    Step step;
    for (size_t position = 1; position <= Step::parameters; ++position) {
      double value = null_value;
      const Status status = call.evaluate(position, value);
      if (failed(status) && !Step::ignores_status) return status;
      if (!step.take(position, value, call.table())) return call.answer(null_value);
    }
    double x = null_value;
    const Status status = call.evaluate(0, x);
    if (failed(status) && !Step::ignores_status) return status;
    const int32_t column = result_column(call);
    const double before = call.table().cell(int64_t{call.row} - 1, column);
    return call.answer(stored(call, column, call.row == 0 ? step.first(x) : step.next(x, before)));
  }

  const double* column(const ColumnCall& call) const final {
    Step step;
    for (size_t position = 1; position <= Step::parameters; ++position) {
      const std::optional<double> value = call.number(position);
      if (!value) return nullptr;
      if (!step.take(position, *value, call.table())) return call.everywhere(null_value);
    }
    if (!call.variable.has_column()) return nullptr;
    const double* x = call.values(0);
    if (x == nullptr) return nullptr;
    double* y = call.overwrite(call.variable.column_index);
    run<1>({{{step, x, y, y[-1]}}}, call.size());
    return y;
  }
  bool can_run_side_by_side(const ColumnCall& call) const final {
    Step step;
    return takes_numbers(call, step) && call.variable.has_column();
  }
  bool run_side_by_side(std::span<const ColumnCall> calls) const final {
    const size_t size = calls.front().size();
    return in_groups(calls, lane_of, [size](const auto& lanes) { run(lanes, size); });
  }

  bool run_followed(std::span<const ColumnCall> calls, const ColumnCall& follower) const final {
    const Lane last = lane_over(nullptr, follower);
    if (calls.size() == 1) return run_followed<1>({lane_of(calls[0])}, last, follower.size());
    return run_followed<2>({lane_of(calls[0]), lane_of(calls[1])}, last, follower.size());
  }

  ColumnTraits column_traits() const final { return {.side_by_side = true, .is_followed = true}; }

 private:
  struct Lane {
    Step step;
    const double* x;
    double* y;
    double value;  ///< of the bar before
  };

  static Lane lane_of(const ColumnCall& call) { return lane_over(call.values(0), call); }
  static Lane lane_over(const double* x, const ColumnCall& call) {
    double* y = call.own_cells(call.variable.column_index);
    Lane lane{{}, x, y, y[-1]};
    takes_numbers(call, lane.step);
    return lane;
  }

  /// False if a parameter isn't a number or makes the bars null.
  static bool takes_numbers(const ColumnCall& call, Step& step) {
    for (size_t position = 1; position <= Step::parameters; ++position) {
      const std::optional<double> value = call.number(position);
      if (!value || !step.take(position, *value, call.table())) return false;
    }
    return true;
  }

  template <size_t count>
  static void run(std::array<Lane, count> lanes, size_t size) {
    for (size_t i = 0; i < size; ++i) {
      advance(lanes, i);
    }
  }

  template <size_t count>
  static void advance(std::array<Lane, count>& lanes, size_t i) {
#pragma GCC unroll 4
    for (Lane& lane : lanes) lane.y[i] = lane.value = lane.step.next(lane.x[i], lane.value);
  }

  /// The last lane is a row behind, so that it doesn't wait for the others.
  template <size_t count>
  static bool run_followed(std::array<Lane, count> lanes, Lane last, size_t size) {
    if (std::ranges::any_of(lanes, [](const Lane& lane) { return lane.x == nullptr; }))
      return false;
    advance(lanes, 0);
    for (size_t i = 1; i <= size; ++i) {
      const double x = count == 1 ? lanes.front().value : lanes.front().value - lanes.back().value;
      if (i < size) advance(lanes, i);
      last.y[i - 1] = last.value = last.step.next(x, last.value);
    }
    return true;
  }
};

}  // namespace quor
