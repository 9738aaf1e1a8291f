// How many bars lie between this bar and an event.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "core/call.h"
#include "core/reduce.h"
#include "functions/beyond_walk.h"
#include "functions/row_words.h"
#include "functions/window_extremes.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// What `value_of` makes of the newest bar at which a test of X holds.
template <typename Test, double (*value_of)(NewestHit hit, int32_t row, double start),
          bool keeps_start>
class SinceHit final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    NewestHit hit;
    if (call.row >= 0) {
      const Status status = newest_hit<Test>(call, call.row, 0, hit.row);
      if (failed(status)) return status;
    }
    return call.answer(value_of(hit, call.row, call.result));
  }
  const double* column(const ColumnCall& call) const override {
    const NewestHit* hits = newest_hits<Test>(call, call.rows);
    if (hits == nullptr) return nullptr;
    hits -= call.rows.first;
    return call.each_row(
        [hits, start = call.start](int32_t row) { return value_of(hits[row], row, start); });
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .keeps_start = keeps_start, .revisits = true};
  }
};

/// Bars since X last held. Without a hit the caller's start value stands.
double bars_since(NewestHit hit, int32_t row, double start) {
  return hit.row >= 0 ? static_cast<double>(row) - hit.row : start;
}
using BARSLAST = SinceHit<IsOne, bars_since, true>;

bool is_one(double x) { return x == 1.0; }
bool is_not_one(double x) { return x != 1.0; }

/// For how many bars X has held without a break; all bars where it has never failed.
double bars_held(NewestHit fails, int32_t row, double) {
  return std::max(row - (fails.row == no_row ? -1.0 : fails.row), 0.0);
}
using BARSLASTCOUNT = SinceHit<OneValue<is_not_one>, bars_held, false>;

/// Bars since X first held. Counts on the statement that holds the call: its column has the
/// previous result.
class BARSSINCE final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    const double before =
        call.table().cell(int64_t{call.row} - 1, call.variable.owner_column_index);
    if (!is_null(before)) {
      return call.answer(before + 1.0);
    }
    double value = null_value;
    const Status status = call.evaluate(0, value);
    if (!failed(status)) call.result = value == 1.0 ? 0.0 : null_value;
    return status;
  }
  ColumnTraits column_traits() const override { return {.passes_over = true}; }
};

/// Bars since X first held within the last N bars.
class BARSSINCEN final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    double period = null_value;
    const Status status = call.evaluate(1, period);
    if (failed(status)) return status;
    call.result = null_value;
    if (!(period > 0.0)) return Status::ok;
    return oldest_hit(call, first_row(call.row, period));
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    if (!period || call.variable.remembering != Remembering::catching_up) return nullptr;
    if (!(*period > 0.0)) return call.everywhere(null_value);
    const double* x = call.values(0);
    if (x == nullptr) return nullptr;
    const auto* counts = follow<HitCount>(
        call, call.rows, [x](size_t place, HitCount& count) { count.hits += is_one(x[place]); });
    if (counts == nullptr) return nullptr;
    counts -= call.rows.first;
    double* result = call.scratch();
    int32_t hit = oldest_hit(counts, first_row(call.rows.first, *period), call.rows.first);
    for (int32_t row = call.rows.first; row < call.rows.end; ++row) {
      const int32_t first = first_row(row, *period);
      if (hit < first) hit = first;
      while (hit <= row && !is_hit(counts, hit)) ++hit;
      result[row - call.rows.first] = hit <= row ? row - hit : null_value;
    }
    return result;
  }
  /// A bar with an older hit doesn't come to X of its own.
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .passes_over = true, .revisits = true};
  }

 private:
  /// How many bars up to one have an X that holds.
  struct HitCount {
    int32_t hits = 0;
  };

  static int32_t first_row(int32_t row, double period) {
    return row - period + 1.0 >= 0.0 ? row - to_int(period) + 1 : 0;
  }

  static int32_t hits_before(const HitCount* counts, int32_t row) {
    return row == 0 ? 0 : counts[row - 1].hits;
  }
  static bool is_hit(const HitCount* counts, int32_t row) {
    return counts[row].hits != hits_before(counts, row);
  }

  /// The oldest hit of the rows from `first` to `last`, else the row behind them.
  static int32_t oldest_hit(const HitCount* counts, int32_t first, int32_t last) {
    const auto found = std::ranges::upper_bound(counts + first, counts + last + 1,
                                                hits_before(counts, first), {}, &HitCount::hits);
    return static_cast<int32_t>(found - counts);
  }

  static Status oldest_hit(const Call& call, int32_t first) {
    const auto step = [&call](int32_t row, HitCount& count) {
      double value;
      const Status status = call.recall(0, row, value);
      count.hits += is_one(value);
      return status;
    };
    RowStates<HitCount>* states = nullptr;
    if (call.variable.remembering == Remembering::catching_up) {
      if (const Status status = follow(call, call.row, 1, step, states); failed(status)) {
        return status;
      }
    }
    int32_t hit = states != nullptr ? oldest_hit(states->data(), first, call.row) : first;
    for (HitCount count; states == nullptr && hit <= call.row; ++hit) {
      if (const Status status = step(hit, count); failed(status)) return status;
      if (count.hits > 0) break;
    }
    if (hit <= call.row) call.result = call.row - hit;
    return Status::ok;
  }
};

/// The distance between the last bar at which A held and the last at which B held.
class CONDBARS final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    const auto step = [&call](int32_t row, NewestHits& newest) {
      const Status status = test(call, row, 0, newest);
      return failed(status) ? status : test(call, row, 1, newest);
    };
    RowStates<NewestHits>* states = nullptr;
    Status status = follow(call, call.row, 2, step, states);
    if (failed(status)) return status;
    NewestHits newest;
    const auto is_missing = [&newest](size_t position) { return newest.rows[position] == no_row; };
    int32_t row = call.row;
    for (; row >= 0 && (is_missing(0) || is_missing(1)) && has_to_walk(call, states, call.row, row);
         --row) {
      for (size_t position = 0; position < 2; ++position) {
        if (is_missing(position)) status = test(call, row, position, newest);
        if (failed(status)) return status;
      }
    }
    for (size_t position = 0; position < 2 && states != nullptr && row >= 0; ++position) {
      if (is_missing(position)) newest.rows[position] = states->after(row).rows[position];
    }
    return call.answer(distance(newest));
  }
  const double* column(const ColumnCall& call) const override {
    const double* a = call.values(0);
    const double* b = a != nullptr ? call.values(1) : nullptr;
    if (b == nullptr) return nullptr;
    const auto* newest =
        follow<NewestHits>(call, call.rows, [&call, a, b](size_t place, NewestHits& hits) {
          const int32_t row = call.rows.first + static_cast<int32_t>(place);
          hits.rows[0] = either(is_one(a[place]), row, hits.rows[0]);
          hits.rows[1] = either(is_one(b[place]), row, hits.rows[1]);
        });
    if (newest == nullptr) return nullptr;
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) result[i] = distance(newest[i]);
    return result;
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .revisits = true, .series_count = 2};
  }

 private:
  struct NewestHits {
    int32_t rows[2] = {no_row, no_row};
  };

  static double distance(const NewestHits& newest) {
    const bool both = newest.rows[0] != no_row && newest.rows[1] != no_row;
    return both ? std::abs(newest.rows[0] - newest.rows[1]) : 0.0;
  }

  static Status test(const Call& call, int32_t row, size_t position, NewestHits& newest) {
    double value;
    const Status status = call.recall(position, row, value);
    if (is_one(value)) newest.rows[position] = row;
    return status;
  }
};

/// How many of the last bars it takes for X to sum up to A. Volumes are summed in lots of a
/// hundred.
class SUMBARS final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    double goal = null_value;
    Status status = call.evaluate(1, goal);
    if (failed(status)) return status;
    call.result = null_value;
    if (!(goal > 0.0)) return Status::ok;
    Sum sum{call.argument(0).column_id == volume_column_id};
    for (int32_t row = call.row; row >= 0; --row) {
      double value;
      status = call.recall(0, row, value);
      if (failed(status)) return status;
      if (sum.reaches(goal, value)) return call.answer(call.row - row + 1);
    }
    return Status::ok;
  }
  /// How far back a bar looks can't be foretold, so that X has to be a field.
  const double* column(const ColumnCall& call) const override {
    const double* goals = call.values(1);
    const Variable* field = call.argument(0);
    const bool is_field = field != nullptr && field->kind == VariableKind::field;
    if (goals == nullptr || !is_field || field->column_index == -1) return nullptr;
    const double* x = call.cells(field->column_index);
    double* result = call.scratch();
    for (int32_t row = call.rows.first; row < call.rows.end; ++row) {
      const double goal = goals[row - call.rows.first];
      Sum sum{field->column_id == volume_column_id};
      int32_t at = goal > 0.0 ? row : -1;
      while (at >= 0 && !sum.reaches(goal, x[at])) --at;
      result[row - call.rows.first] = at >= 0 ? row - at + 1.0 : null_value;
    }
    return result;
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .passes_over = true, .revisits = true};
  }

 private:
  struct Sum {
    const bool in_lots;
    double sum = 0.0;

    bool reaches(double goal, double value) {
      sum += value;
      return (in_lots ? sum / 100.0 : sum) >= goal;
    }
  };
};

/// The distance to the N-th earlier bar of a series that stands beyond the first argument's value
/// of this bar.
template <Extreme extreme, size_t series_argument>
class DistanceToBeyond : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    constexpr size_t period_argument = series_argument + 1;
    if (call.scan) return call.check_count(period_argument + 1);
    call.result = null_value;
    if (call.row == 0) return Status::ok;
    double threshold = null_value;
    Status status = call.evaluate(0, threshold);
    if (failed(status)) return status;
    double period = null_value;
    status = call.evaluate(period_argument, period);
    if (failed(status)) return status;
    const int32_t wanted = to_int(std::floor(period));
    if (wanted >= 1 && call.row > 0) find(call, threshold, wanted);
    return Status::ok;
  }
  ColumnTraits column_traits() const final {
    return {.leaves_state = false,
            .passes_over = true,
            .revisits = true,
            .series_count = series_argument + 1};
  }

 private:
  static void find(const Call& call, double threshold, int32_t wanted) {
    const auto arrives = [&call, threshold, &wanted](int32_t row, double& value) {
      ignore_status(call.recall(series_argument, row, value));
      if (!beats<extreme>(value, threshold) || --wanted > 0) return false;
      call.result = call.row - row;
      return true;
    };
    BeyondWalk<extreme> walk(call, series_argument, threshold,
                             series_argument == 0 ? call.row : call.row - 1);
    double value;
    int32_t row = call.row - 1;
    const int32_t near = std::max(row - BeyondWalk<extreme>::short_walk, -1);
    for (; row > near; --row) {
      if (arrives(row, value)) return;
    }
    for (row = walk.next(row); row >= 0; row = walk.next(row - 1)) {
      if (arrives(row, value)) return;
      walk.pass(row, value);
    }
  }
};

using NEWHBARS = DistanceToBeyond<Extreme::greatest, 0>;
using NEWLBARS = DistanceToBeyond<Extreme::smallest, 0>;
using NEWHBARS1 = DistanceToBeyond<Extreme::greatest, 1>;
using NEWLBARS1 = DistanceToBeyond<Extreme::smallest, 1>;

constexpr std::string_view volume_field[] = {"VOL"};

constexpr WordRow event_distance_rows[] = {
    word_row<BARSLAST>("BARSLAST", 5, steady),
    word_row<BARSLASTCOUNT>("BARSLASTCOUNT", 172, steady),
    word_row<BARSSINCE>("BARSSINCE", 173, looks_back | reads_statement),
    word_row<BARSSINCEN>("BARSSINCEN", 174, steady | period_at(1)),
    word_row<CONDBARS>("CONDBARS", 175, steady),
    word_row<SUMBARS>("SUMBARS", 192, steady, volume_field),
    word_row<NEWHBARS>("NEWHBARS", 183, steady),
    word_row<NEWLBARS>("NEWLBARS", 185, steady),
    word_row<NEWHBARS1>("NEWHBARS1", 184, steady),
    word_row<NEWLBARS1>("NEWLBARS1", 186, steady),
};

}  // namespace

std::span<const WordRow> event_distance_words() { return event_distance_rows; }

}  // namespace quor
