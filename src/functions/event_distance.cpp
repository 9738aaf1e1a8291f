// How many bars lie between this bar and an event.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/call.h"
#include "functions/beyond_walk.h"
#include "functions/families.h"
#include "functions/row_words.h"
#include "functions/window_extremes.h"
#include "tables/field_table.h"

namespace quor {
namespace {

/// Bars since X last held. Without a hit the caller's start value stands.
class BARSLAST final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    const int32_t row = newest_hit(call, 0);
    if (row >= 0) call.result = call.row - row;
    return Status::ok;
  }
};

/// For how many bars X has held without a break.
class BARSLASTCOUNT final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    WalkSession session(call, 1, call.row);
    const auto fails = [&call](int32_t row, bool& hit) {
      double value = null_value;
      const Status status = call.evaluate_at(0, row, value);
      hit = value != 1.0;
      return status;
    };
    int32_t last = no_row;
    const Status status = session.newest(call.row, 0, fails, last);
    if (failed(status)) return status;
    return call.answer(std::max(call.row - (last == no_row ? -1.0 : last), 0.0));
  }
};

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

 private:
  /// The oldest hit of the rows from `first` up to but without `end`, or `no_row`.
  struct OldestHit final : CallMemory {
    Dependencies dependencies;
    int32_t first = 0;
    int32_t end = 0;
    int32_t hit = no_row;

    bool serves(int32_t row) const { return first <= row && row < end; }
    int32_t next(int32_t row) const { return hit >= row ? hit : hit == no_row ? end : row; }
  };

  static int32_t first_row(int32_t row, double period) {
    return row - period + 1.0 >= 0.0 ? row - to_int(period) + 1 : 0;
  }

  static Status oldest_hit(const Call& call, int32_t first) {
    auto& memory = memory_of<OldestHit>(call);
    const bool remembers = call.row >= 0 && call.row < call.table().row_count() &&
                           memory.dependencies.can_be_remembered(call, 1);
    const int32_t end = memory.dependencies.settled_end(call.row);
    int64_t row = first;
    if (remembers) {
      if (memory.dependencies.have_changed(call.table()) || memory.end > end) memory.end = 0;
      memory.dependencies.watch(call.table(), end);
      if (memory.serves(first)) row = memory.next(first);
    }
    int32_t hit = no_row;
    for (; row <= call.row && hit == no_row; ++row) {
      double value = null_value;
      const auto here = static_cast<int32_t>(row);
      const Status status = call.evaluate_at(0, here, value);
      if (failed(status)) return status;
      if (value == 1.0) hit = here;
    }
    if (hit != no_row) call.result = call.row - hit;
    if (!remembers) return Status::ok;
    memory.first = first;
    memory.end = memory.dependencies.have_changed(call.table()) ? 0 : end;
    memory.hit = hit < end ? hit : no_row;
    return Status::ok;
  }
};

/// The distance between the last bar at which A held and the last at which B held.
class CONDBARS final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    WalkSession session(call, 2, call.row);
    WalkSession::Walk walks[] = {{session, call.row, 0, 0}, {session, call.row, 0, 1}};
    const Status status = walk_side_by_side(call, walks);
    if (failed(status)) return status;
    const int32_t hits[] = {walks[0].found(), walks[1].found()};
    const bool both = hits[0] != no_row && hits[1] != no_row;
    return call.answer(both ? std::abs(hits[0] - hits[1]) : 0.0);
  }

 private:
  static Status test(const Call& call, size_t position, int32_t row, bool& hit) {
    double value = null_value;
    const Status status = call.evaluate_at(position, row, value);
    hit = value == 1.0;
    return status;
  }

  /// Each row with the first walk before the second, for the columns that their words take in turn.
  static Status walk_side_by_side(const Call& call, WalkSession::Walk (&walks)[2]) {
    while (walks[0].goes_on() || walks[1].goes_on()) {
      const bool first =
          walks[0].goes_on() && (!walks[1].goes_on() || walks[0].row() >= walks[1].row());
      const size_t position = first ? 0 : 1;
      WalkSession::Walk& walk = walks[position];
      if (walk.skip()) continue;
      bool hit = false;
      const Status status = test(call, position, walk.row(), hit);
      if (failed(status)) return status;
      walk.take(hit);
    }
    for (const WalkSession::Walk& walk : walks) walk.remember();
    return Status::ok;
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
    const bool in_lots = call.argument(0).column_id == volume_column_id;
    double sum = 0.0;
    for (int32_t row = call.row; row >= 0; --row) {
      double value = null_value;
      status = call.evaluate_at(0, row, value);
      if (failed(status)) return status;
      sum += value;
      if (!((in_lots ? sum / 100.0 : sum) >= goal)) continue;
      return call.answer(call.row - row + 1);
    }
    return Status::ok;
  }
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

 private:
  /// So many rows are looked at sooner than a memory.
  static constexpr int32_t short_walk = 16;

  static void find(const Call& call, double threshold, int32_t wanted) {
    const auto arrives = [&call, threshold, &wanted](int32_t row, double& value) {
      value = null_value;
      ignore_status(call.evaluate_at(series_argument, row, value));
      if (!beats<extreme>(value, threshold) || --wanted > 0) return false;
      call.result = call.row - row;
      return true;
    };
    double value;
    int32_t row = call.row - 1;
    for (const int32_t near = std::max(row - short_walk, -1); row > near; --row) {
      if (arrives(row, value)) return;
    }
    if (row < 0) return;
    BeyondWalk<extreme> walk(call, series_argument + 1, threshold, row);
    for (row = walk.next(row); row >= 0; row = walk.next(row - 1)) {
      if (arrives(row, value)) return;
      walk.pass(row, value);
    }
  }
};

class NEWHBARS final : public DistanceToBeyond<Extreme::greatest, 0> {
  using DistanceToBeyond::DistanceToBeyond;
};
class NEWLBARS final : public DistanceToBeyond<Extreme::smallest, 0> {
  using DistanceToBeyond::DistanceToBeyond;
};
class NEWHBARS1 final : public DistanceToBeyond<Extreme::greatest, 1> {
  using DistanceToBeyond::DistanceToBeyond;
};
class NEWLBARS1 final : public DistanceToBeyond<Extreme::smallest, 1> {
  using DistanceToBeyond::DistanceToBeyond;
};

constexpr WordRow words[] = {
    word_row<BARSLAST>("BARSLAST", steady),
    word_row<BARSLASTCOUNT>("BARSLASTCOUNT", steady),
    word_row<BARSSINCE>("BARSSINCE", reads_statement),
    word_row<BARSSINCEN>("BARSSINCEN", steady),
    word_row<CONDBARS>("CONDBARS", steady),
    word_row<SUMBARS>("SUMBARS", steady),
    word_row<NEWHBARS>("NEWHBARS", steady),
    word_row<NEWLBARS>("NEWLBARS", steady),
    word_row<NEWHBARS1>("NEWHBARS1", steady | late_by_one),
    word_row<NEWLBARS1>("NEWLBARS1", steady | late_by_one),
};

}  // namespace

std::span<const WordRow> event_distance_words() { return words; }

}  // namespace quor
