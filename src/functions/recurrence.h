// The shape of a word whose value at a bar comes from the value of the bar before.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "core/columns.h"
#include "functions/averaging.h"
#include "functions/side_by_side.h"
#include "functions/weighted_step.h"
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
///     std::optional<WeightedStep> weighted() const;
///                                           // where there is one: the same for numbers
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
    const int32_t column = call.variable.column_index;
    double* y = call.results_of(column);
    run<false, 1>({{{step, x, y}}}, call.size());
    return call.keep(column, y);
  }
  bool can_run_side_by_side(const ColumnCall& call) const final {
    Step step;
    return takes_numbers(call, step) && call.variable.has_column();
  }
  bool run_side_by_side(std::span<const ColumnCall> calls) const final {
    return in_groups(calls, lane_of, [](auto group, const auto& lanes) {
      run<false>(lanes, group.front().size());
      for (size_t k = 0; k < lanes.size(); ++k) keep(group[k], lanes[k]);
    });
  }

  bool run_followed(std::span<const ColumnCall> calls, const ColumnCall& follower) const final {
    return calls.size() == 1 ? run_followed<1>(calls, follower) : run_followed<2>(calls, follower);
  }

  ColumnTraits column_traits() const final { return {.side_by_side = true, .is_followed = true}; }

 private:
  template <typename S>
  struct Lane {
    S step;
    const double* x;
    double* y;  ///< behind the value of the bar before
  };
  static constexpr bool can_be_fused = requires(const Step& step) { step.weighted(); };

  static Lane<Step> lane_of(const ColumnCall& call) { return lane_over(call.values(0), call); }
  static Lane<Step> lane_over(const double* x, const ColumnCall& call) {
    Lane<Step> lane{{}, x, call.results_of(call.variable.column_index)};
    takes_numbers(call, lane.step);
    return lane;
  }
  static void keep(const ColumnCall& call, const Lane<Step>& lane) {
    call.write(call.variable.column_index, lane.y);
  }

  /// False if a parameter isn't a number or makes the bars null.
  static bool takes_numbers(const ColumnCall& call, Step& step) {
    for (size_t position = 1; position <= Step::parameters; ++position) {
      const std::optional<double> value = call.number(position);
      if (!value || !step.take(position, *value, call.table())) return false;
    }
    return true;
  }

  template <size_t leading>
  static bool run_followed(std::span<const ColumnCall> calls, const ColumnCall& follower) {
    std::array<Lane<Step>, leading + 1> lanes;
    for (size_t k = 0; k < leading; ++k) {
      lanes[k] = lane_of(calls[k]);
      if (lanes[k].x == nullptr) return false;
    }
    lanes[leading] = lane_over(nullptr, follower);
    run<true>(lanes, follower.size());
    for (size_t k = 0; k < leading; ++k) keep(calls[k], lanes[k]);
    keep(follower, lanes[leading]);
    return true;
  }

  /// With `follows` the last lane goes over what the others come to, one value or the difference of
  /// two.
  template <bool follows, size_t count>
  static void run(const std::array<Lane<Step>, count>& lanes, size_t size) {
    const auto fused = fused_lanes(lanes);
    for (size_t first = 0; first < size; first += fused_strip) {
      const size_t end = std::min(first + fused_strip, size);
      if (!fused || !run_fused<follows>(*fused, first, end)) run_rows<follows>(lanes, first, end);
    }
  }

  template <size_t count>
  static std::optional<std::array<Lane<WeightedStep>, count>> fused_lanes(
      const std::array<Lane<Step>, count>& lanes) {
    if constexpr (can_be_fused) {
      std::array<Lane<WeightedStep>, count> fused;
      for (size_t k = 0; k < count; ++k) {
        const std::optional<WeightedStep> step = lanes[k].step.weighted();
        if (!is_wide() || !step) return std::nullopt;
        fused[k] = {*step, lanes[k].x, lanes[k].y};
      }
      return fused;
    }
    return std::nullopt;
  }

  /// False where a result leaves a doubt; then all of them have to be divided.
  template <bool follows, size_t count>
  static bool run_fused(const std::array<Lane<WeightedStep>, count>& lanes, size_t first,
                        size_t end) {
    run_wide([=] { run_rows<follows>(lanes, first, end); });
    return std::ranges::all_of(lanes, [first, end](const Lane<WeightedStep>& lane) {
      return are_quotients(lane.y + first, end - first);
    });
  }

  template <bool follows, typename S, size_t count>
  static void run_rows(const std::array<Lane<S>, count> lanes, size_t first, size_t end) {
    constexpr size_t leading = follows ? count - 1 : count;
    double values[count];
    for (size_t k = 0; k < count; ++k) values[k] = lanes[k].y[static_cast<ptrdiff_t>(first) - 1];
    const auto advance = [&](size_t k, size_t i, double x) {
      lanes[k].y[i] = values[k] = lanes[k].step.next(x, values[k]);
    };
    const auto lead = [&](size_t i) {
#pragma GCC unroll 4
      for (size_t k = 0; k < leading; ++k) advance(k, i, lanes[k].x[i]);
    };
    lead(first);
    for (size_t i = first + 1; i < end; ++i) {
      const double x = leading == 1 ? values[0] : values[0] - values[1];
      lead(i);
      // A row behind, so that it doesn't wait for the others.
      if constexpr (follows) advance(leading, i - 1, x);
    }
    if constexpr (follows) {
      advance(leading, end - 1, leading == 1 ? values[0] : values[0] - values[1]);
    }
  }
};

}  // namespace quor
