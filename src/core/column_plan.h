// Which statements of a script can be worked out column by column.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/model.h"

namespace quor {

/// A statement goes by columns if that leaves the same cells as bar by bar: all its words have a
/// column form, and the columns that it reads are finished before it.
///
/// Bar by bar, a statement sees the cells of later statements as an earlier run has left them, and
/// a word that reads ahead of its bar sees later bars so. The statements at both ends of such a
/// view go bar by bar.
class ColumnPlan {
 public:
  /// `each_in_full` if the run takes one statement after the other over all rows.
  void make(std::span<Variable* const> statements, std::span<Variable* const> variables,
            bool each_in_full);

  /// Whether the statement can go by columns in a run from a row on.
  bool by_columns(size_t statement, int32_t first_row) const {
    const Entry& entry = entries_[statement];
    return entry.by_columns && (first_row == 0 || !entry.revisits_state);
  }
  /// Whether all statements can go by columns and see no later rows.
  bool is_whole() const { return is_whole_; }
  /// Columns that statements read and none writes.
  std::span<const int32_t> reads_of_no_statement() const { return given_; }
  /// The statements that have to be finished for a block before this one can take it.
  std::span<const uint32_t> rests_on(size_t statement) const {
    return entries_[statement].rests_on;
  }
  /// Calls of the statement that can be worked out before all statements: they read numbers and
  /// fields that no statement writes.
  std::span<Variable* const> side_by_side(size_t statement) const {
    return entries_[statement].side_by_side;
  }

 private:
  struct Entry {
    bool by_columns = true;
    bool sees_later_rows = false;
    bool looks_back = true;  ///< alone: no call sees later rows or follows their number
    /// Evaluates calls that keep a state again at bars that it has passed. That changes nothing
    /// where all bars have been passed in order, from row 0 on.
    bool revisits_state = false;
    std::vector<int32_t> reads;  ///< columns
    std::vector<Variable*> side_by_side;
    std::vector<uint32_t> rests_on;
  };
  class Inspection;

  void note_views(bool each_in_full);
  void refuse_what_rests_on_others();

  std::vector<Entry> entries_;
  std::vector<int32_t> given_;  ///< columns that are read and not written
  bool is_whole_ = false;
  std::vector<int32_t> columns_;  ///< of the statements
};

}  // namespace quor
