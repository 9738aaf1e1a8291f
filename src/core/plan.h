// How a compiled script is calculated: which statements go column by column, and what its calls
// may remember from bar to bar.
//
// Both questions rest on the same few:
//   - A call leaves a state (`leaves_state`) if an evaluation writes cells or something in the
//     call, so that the next one may find it: SMA does, ABS doesn't.
//   - A value is steady if it is the same whenever it is asked for, given its row and those
//     before: it sees only the past (`looks_back`), and no call in it acts or draws lots
//     (`repeatable`).
//   - How a statement comes to a part of it is the part's `Reach`: at each row once and in their
//     order, or back and forth, late, ahead, at some rows only.
//   - Cells are final if no evaluation writes one of them before the row of the statement.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/model.h"

namespace quor {

class CompiledScript;
class DataTable;
class PlanWalk;

/// A statement goes by columns if that leaves the same cells as bar by bar: all its words have a
/// column form, and the columns that it reads are finished before it.
///
/// Bar by bar, a statement sees the cells of later statements as an earlier run has left them, and
/// a word that reads ahead of its bar sees later bars so. The statements at both ends of such a
/// view go bar by bar.
class Plan {
 public:
  /// To be made anew when the table has other columns. Sets `Variable::remembering`,
  /// `Variable::for_one_run`, `Variable::twin` and `Variable::follower` of every call that a
  /// statement evaluates, and at the first time `CompiledScript::shares_columns`.
  void make(CompiledScript& script, const DataTable& table);

  /// Whether the statement can go by columns in a run from a row on.
  bool by_columns(size_t statement, int32_t first_row) const {
    const Way& way = ways_[statement];
    return way.by_columns && (first_row == 0 || !way.revisits_state);
  }
  /// Whether all statements can go by columns and see no later rows.
  bool is_whole() const { return is_whole_; }
  /// Whether a run takes one statement after the other over all rows.
  bool each_in_full() const { return each_in_full_; }
  /// Columns that statements read and none writes.
  std::span<const int32_t> reads_of_no_statement() const { return given_; }
  /// The statements that have to be finished for a block before this one can take it.
  std::span<const uint32_t> rests_on(size_t statement) const { return ways_[statement].rests_on; }
  /// The columns that the statement reads, if it leaves at a bar what it has left there before as
  /// long as they hold the same; else null.
  const std::vector<int32_t>* inputs(size_t statement) const {
    const Way& way = ways_[statement];
    return way.is_repeatable ? &way.inputs : nullptr;
  }
  /// Calls of the statement that can be worked out before all statements: they read numbers and
  /// fields that no statement writes.
  std::span<Variable* const> side_by_side(size_t statement) const {
    return ways_[statement].side_by_side;
  }

 private:
  struct Way {
    bool by_columns = true;
    bool revisits_state = false;
    bool is_repeatable = true;
    std::vector<int32_t> inputs;
    std::vector<uint32_t> rests_on;
    std::vector<Variable*> side_by_side;
  };

  void find_ways(const CompiledScript& script, const PlanWalk& walk);
  void note_reads(const PlanWalk& walk);
  void note_followers(const CompiledScript& script, const PlanWalk& walk);
  void note_side_by_side(const PlanWalk& walk);
  void refuse_what_rests_on_others();

  std::vector<Way> ways_;       ///< by statement
  std::vector<int32_t> given_;  ///< columns that are read and not written
  bool is_whole_ = false;
  bool each_in_full_ = false;
};

}  // namespace quor
