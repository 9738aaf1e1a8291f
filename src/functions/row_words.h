// What the words along the row axis share: the newest row at which a test of the arguments holds.
#pragma once

#include <cstdint>
#include <limits>

#include "core/call.h"
#include "core/columns.h"
#include "core/reduce.h"
#include "functions/call_memory.h"
#include "functions/word_steps.h"

namespace quor {

/// Where a walk found nothing; no row has this number.
inline constexpr int32_t no_row = std::numeric_limits<int32_t>::min();

/// A test of the first argument at a bar.
template <bool (*holds)(double), bool ignores_status = false>
struct OneValue {
  static constexpr size_t arguments = 1;
  static Status at(const Call& call, int32_t row, bool& hit) {
    double x;
    const Status status = call.recall(0, row, x);
    hit = holds(x);
    return ignores_status ? Status::ok : status;
  }

  /// Reads the arguments over a block; false where they have to go bar by bar.
  bool read(const ColumnCall& call, Block rows) {
    x = call.values(0, rows);
    return x != nullptr;
  }
  bool holds_at(size_t place) const { return holds(x[place]); }

  const double* x = nullptr;
};

/// As `OneValue` for the first two arguments.
template <bool (*holds)(double, double)>
struct TwoValues {
  static constexpr size_t arguments = 2;
  static Status at(const Call& call, int32_t row, bool& hit) {
    double values[2];
    for (size_t i = 0; i < 2; ++i) {
      const Status status = call.recall(i, row, values[i]);
      if (failed(status)) return status;
    }
    hit = holds(values[0], values[1]);
    return Status::ok;
  }

  bool read(const ColumnCall& call, Block rows) {
    a = call.values(0, rows);
    b = a != nullptr ? call.values(1, rows) : nullptr;
    return b != nullptr;
  }
  bool holds_at(size_t place) const { return holds(a[place], b[place]); }

  const double* a = nullptr;
  const double* b = nullptr;
};

/// A test of the first argument at a bar and at the one before, which is 0.0 where there is none.
template <bool (*holds)(double before, double value)>
struct ValueAndBefore {
  static constexpr size_t arguments = 1;
  static Status at(const Call& call, int32_t row, bool& hit) {
    double value;
    Status status = call.recall(0, row, value);
    if (failed(status)) return status;
    double before = 0.0;
    if (row >= 1) status = call.recall(0, row - 1, before);
    if (!failed(status)) hit = holds(before, value);
    return status;
  }

  bool read(const ColumnCall& call, Block rows) {
    x = call.values(0, {rows.first - 1, rows.end});
    return x != nullptr;
  }
  bool holds_at(size_t place) const { return holds(x[place], x[place + 1]); }

  const double* x = nullptr;
};

/// The newest row up to a bar at which a test holds.
struct NewestHit {
  int32_t row = no_row;
  bool operator==(const NewestHit&) const = default;
};

/// The newest row from `row` down to `lowest` at which the test holds, or `no_row`. There is at
/// least one row to look at.
template <typename Test>
Status newest_hit(const Call& call, int32_t row, int64_t lowest, int32_t& found) {
  const auto step = [&call](int32_t at, NewestHit& newest) {
    bool hit = false;
    const Status status = Test::at(call, at, hit);
    if (hit) newest.row = at;
    return status;
  };
  RowStates<NewestHit>* states = nullptr;
  Status status = follow(call, row, Test::arguments, step, states);
  if (failed(status)) return status;
  NewestHit newest;
  const auto walk = [&step, &newest](int64_t from, int64_t to) {
    for (; newest.row == no_row && from >= to; --from) {
      const Status passed = step(static_cast<int32_t>(from), newest);
      if (failed(passed)) return passed;
    }
    return Status::ok;
  };
  const int64_t least = std::max<int64_t>(lowest, 0);
  int64_t at = row;
  for (; newest.row == no_row && at >= least && has_to_walk(call, states, row, at); --at) {
    if (const Status passed = walk(at, at); failed(passed)) return passed;
  }
  if (newest.row == no_row && at >= least) newest = states->after(static_cast<int32_t>(at));
  if (newest.row == no_row && lowest < 0) {
    // What sees later rows may read cells from there, and so isn't told of by one walk.
    const bool reads_no_cell = states != nullptr && !call.variable.for_one_run;
    status =
        reads_no_cell ? states->hit_below(lowest, step, newest) : walk(std::min(row, -1), lowest);
    if (failed(status)) return status;
  }
  found = newest.row >= lowest ? newest.row : no_row;
  return Status::ok;
}

/// The newest hits of a call over a block; null if it is declined.
template <typename Test>
const NewestHit* newest_hits(const ColumnCall& call, Block rows) {
  Test test;
  if (!test.read(call, rows)) return nullptr;
  return follow<NewestHit>(call, rows, [&test, rows](size_t place, NewestHit& newest) {
    const int32_t row = rows.first + static_cast<int32_t>(place);
    newest.row = either(test.holds_at(place), row, newest.row);
  });
}

/// Whether the first argument truncates to 1, whatever its status.
inline bool truncates_to_one(double x) { return x >= 1.0 && x < 2.0; }
using IsOne = OneValue<truncates_to_one, true>;

/// The newest row up to this one at which the first argument truncates to 1, or `no_row`.
inline int32_t newest_one(const Call& call) {
  int32_t found = no_row;
  ignore_status(newest_hit<IsOne>(call, call.row, 0, found));
  return found;
}

}  // namespace quor
