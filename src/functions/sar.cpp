// The parabolic stop-and-reverse.
//
// A stop follows the price: s = (t - p) * factor + p from the stop p before towards t. The factor
// grows by STEP up to LIMIT at each bar; at a reversal it starts over and the stop jumps to the
// other side. The classic form jumps to the extreme point of the trend and also reverses at the
// current bar; the window form takes the extremes of the N-1 bars before.
#include <algorithm>

#include "core/call.h"
#include "core/column_owners.h"
#include "functions/row_words.h"
#include "functions/window_extremes.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

constexpr double rising_trend = 0.0;
constexpr double falling_trend = 1.0;
constexpr double undecided = 2.0;

struct SarState {
  double stop = null_value;
  double direction = undecided;
  double factor = null_value;
  double extreme = null_value;
};

struct SarSettings {
  int32_t bars = 0;
  double step = null_value;
  double limit = null_value;
};

/// The last N bars, oldest first.
struct SarBars {
  Window highs;
  Window lows;
};

/// Where a stop jumps to: below the price for a rising trend, above it for a falling one.
struct Bounds {
  double low;
  double high;
};

Bounds classic_bounds(const SarBars& bars, double extreme) {
  if (!is_null(extreme)) return {extreme, extreme};
  return {extreme_of<Extreme::smallest>(bars.lows, bars.lows.size()),
          extreme_of<Extreme::greatest>(bars.highs, bars.highs.size())};
}

Bounds window_bounds(const SarBars& bars) {
  const size_t earlier = std::max<size_t>(bars.lows.size() - 1, 1);
  return {extreme_of<Extreme::smallest>(bars.lows, earlier),
          extreme_of<Extreme::greatest>(bars.highs, earlier)};
}

/// The value of the bar before, or of this one in its place.
double value_before(const Window& window) {
  const double before = window[window.size() >= 2 ? window.size() - 2 : 0];
  return is_null(before) ? window.back() : before;
}

void reverse(SarState& state, double direction, double stop, double step) {
  state.direction = direction;
  state.stop = stop;
  state.factor = step;
}

/// Moves the stop along; a stop beyond the bar before aims at that bar or, in the window form, at
/// the bounds.
void follow(SarState& state, const Bounds& targets, double high_before, double low_before,
            const SarSettings& settings) {
  double target = state.stop;
  if (state.stop >= high_before) {
    state.direction = falling_trend;
    target = targets.low;
  } else if (low_before >= state.stop) {
    state.direction = rising_trend;
    target = targets.high;
  }
  state.stop += (target - state.stop) * state.factor;
  state.factor = std::min(state.factor + settings.step, settings.limit);
}

void reverse_at_this_bar(SarState& state, const SarBars& bars, const Bounds& bounds, double step) {
  const double high = bars.highs.back();
  const double low = bars.lows.back();
  if (state.direction == rising_trend && state.stop > low) {
    reverse(state, falling_trend, std::max(high, bounds.high), step);
  }
  if (state.direction == falling_trend && high > state.stop) {
    reverse(state, rising_trend, std::min(low, bounds.low), step);
  }
}

/// One bar. `up` is the trend that the first stop takes.
void sar_step(SarState& state, const SarBars& bars, const SarSettings& settings, bool up,
              bool classic) {
  const double high_before = value_before(bars.highs);
  const double low_before = value_before(bars.lows);
  if (is_null(high_before) || is_null(low_before)) {
    state.stop = null_value;
    return;
  }
  const Bounds bounds = classic ? classic_bounds(bars, state.extreme) : window_bounds(bars);
  if (is_null(state.stop)) {
    state.stop = up ? bounds.low : bounds.high;
    state.direction = up ? rising_trend : falling_trend;
  } else if (high_before > state.stop && state.direction == falling_trend) {
    reverse(state, rising_trend, bounds.low, settings.step);
  } else if (state.stop > low_before && state.direction == rising_trend) {
    reverse(state, falling_trend, bounds.high, settings.step);
  } else {
    const Bounds targets = classic ? Bounds{low_before, high_before} : bounds;
    follow(state, targets, high_before, low_before, settings);
  }
  if (classic) reverse_at_this_bar(state, bars, bounds, settings.step);
}

void extend_extreme(SarState& state, const SarBars& bars) {
  const double high = bars.highs.back();
  const double low = bars.lows.back();
  if (state.direction == rising_trend && high > state.extreme) state.extreme = high;
  if (state.direction == falling_trend && state.extreme > low) state.extreme = low;
}

/// Four words of one rule. Of stop and direction one goes into the result column, the other into
/// the first auxiliary column; as a result the stop is negative while the trend falls.
template <bool classic, bool shows_direction>
class SarWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.argument_count() != 3) return call.wrong_count();
    SarSettings settings;
    const Status status = take_settings(call, settings);
    if (failed(status) || call.scan) return status;
    if (call.variable.aux_column_ids.empty()) reserve_columns(call.variable, 3);

    SarState state;
    state.factor = settings.step;
    if (call.row > 0) load(call, state);
    if (call.row < settings.bars - 1) {
      state.stop = null_value;
      store(call, state);
      return call.answer(null_value);
    }
    advance(call, settings, state);
    store(call, state);
    return call.answer(shows_direction ? state.direction : signed_stop(state));
  }

 private:
  static Status take_settings(const Call& call, SarSettings& settings) {
    double bars = null_value;
    Status status = call.evaluate(0, bars);
    if (failed(status)) return status;
    settings.bars = to_int(bars);
    if (call.scan) {
      call.script().raise_period(settings.bars);
      return Status::ok;
    }
    status = call.evaluate(1, settings.step);
    if (failed(status)) return status;
    status = call.evaluate(2, settings.limit);
    if (failed(status)) return status;
    const bool usable = settings.bars >= 1 && settings.step != 0.0 && settings.limit != 0.0;
    return usable ? Status::ok : Status::bad_constant;
  }

  static void advance(const Call& call, const SarSettings& settings, SarState& state) {
    const DataTable& table = call.table();
    const SarBars bars = {table.column_window(high_column_id, call.row, settings.bars),
                          table.column_window(low_column_id, call.row, settings.bars)};
    const bool up = table.cell(call.row, table.column_index_of(close_column_id)) >
                    table.cell(0, table.column_index_of(open_column_id));
    if (state.direction == undecided) {
      state.extreme = null_value;
    } else if (call.row == settings.bars) {
      state.extreme = up ? bars.lows.back() : bars.highs.back();
    }
    sar_step(state, bars, settings, up, classic);
    extend_extreme(state, bars);
  }

  static double signed_stop(const SarState& state) {
    return state.direction == falling_trend ? -state.stop : state.stop;
  }

  static void load(const Call& call, SarState& state) {
    const DataTable& table = call.table();
    const int32_t row = call.row - 1;
    const auto& aux = call.variable.aux_column_indexes;
    const double in_result = table.cell(row, call.variable.column_index);
    const double in_aux = table.cell(row, aux[0]);
    state.direction = shows_direction ? in_result : in_aux;
    state.stop = shows_direction ? in_aux : in_result;
    if (!shows_direction) state.stop = signed_stop(state);
    state.factor = table.cell(row, aux[1]);
    state.extreme = table.cell(row, aux[2]);
  }

  static void store(const Call& call, const SarState& state) {
    DataTable& table = call.table();
    const auto& aux = call.variable.aux_column_indexes;
    table.set_cell(call.row, call.variable.column_index,
                   shows_direction ? state.direction : signed_stop(state));
    table.set_cell(call.row, aux[0], shows_direction ? state.stop : state.direction);
    table.set_cell(call.row, aux[1], state.factor);
    table.set_cell(call.row, aux[2], state.extreme);
  }
};

using SAR = SarWord<true, false>;
using SARSHOWTYPE = SarWord<true, true>;
using SAR1 = SarWord<false, false>;
using SAR1SHOWTYPE = SarWord<false, true>;

constexpr WordRow sar_rows[] = {
    word_row<SAR>("SAR", 67, steady | can_fail | has_result_column, bar_fields),
    word_row<SARSHOWTYPE>("SARSHOWTYPE", 203, steady | can_fail | has_result_column, bar_fields),
    word_row<SAR1>("SAR1", 188, steady | can_fail | has_result_column, bar_fields),
    word_row<SAR1SHOWTYPE>("SAR1SHOWTYPE", 204, steady | can_fail | has_result_column, bar_fields),
};

}  // namespace

std::span<const WordRow> sar_words() { return sar_rows; }

}  // namespace quor
