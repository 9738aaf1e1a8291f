// Values of variables over a block of rows, worked out column by column.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "core/data_pool_center.h"
#include "core/program.h"
#include "platform/line_aligned.h"

namespace quor {

class CalculateCenter;
struct ColumnCall;

/// Consecutive rows of the table: `first` up to but without `end`.
struct Block {
  int32_t first = 0;
  int32_t end = 0;

  bool operator==(const Block&) const = default;

  size_t size() const { return static_cast<size_t>(end - first); }
  Block shifted(int32_t rows) const { return {first + rows, end + rows}; }
};

/// One number for every row of a block, in memory that one run uses again for block after block.
class ColumnScratch {
 public:
  /// Room for `size` values, until `release`.
  double* take(size_t size);
  void release() { used_ = 0; }

 private:
  static constexpr size_t least_size = 1024;

  struct Buffer {
    LineAlignedNumbers values;
    size_t size = 0;
  };
  std::vector<Buffer> buffers_;
  size_t used_ = 0;
};

/// Where a step of a formula reads over a block, and where its result goes.
struct StepRows {
  const double* left;
  const double* right;
  double* result;
};

/// Works out statements over a block, one after the other, as bar by bar would: the same values in
/// the same cells. What can't be done so is declined, and the cells are put back.
///
/// A value is a pointer to the first of `Block::size()` numbers, null if it is declined.
///
/// Row 0 is always a bar: no block begins there, and no call is asked for a window of one that
/// does. So a column form finds a row before its own, whatever word holds it.
class Columns {
 public:
  Columns(DataPoolCenter& pool, CalculateCenter& calculator);
  ~Columns();
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

  /// Forgets the blocks before; cells written from now on can be put back.
  void begin(Block block);

  /// Calculates a statement over the block; false if it has to go bar by bar.
  bool calculate(Variable& statement, size_t position);

  /// A call that `Plan::side_by_side` names, to be worked out early.
  struct Early {
    Variable* call;
    size_t position;  ///< of its statement
    Block rows;
  };
  /// Works out calls before their statements, where there are several of a word.
  void run_early(std::span<Early> calls);
  /// Works out two variables beside each other if they are calls of one word that can be, so that
  /// `values` finds them. False where the statement has to go bar by bar.
  bool run_pair(Variable* left, Variable* right, Block rows);
  /// Puts back what was worked out early for a statement that goes bar by bar after all.
  void give_up_early(size_t position);

  /// Puts back the cells that the block has overwritten and that bar by bar would not have come to:
  /// those behind `row`, and those of `row` that statements from `position` on have written.
  void put_back(int32_t row, size_t position);

  /// The values of a variable. `start` is what a word that writes nothing leaves.
  const double* values(Variable& variable, Block rows, double start);
  /// One number at every row.
  const double* everywhere(double value, size_t size);
  double* scratch(size_t size) { return scratch_.take(size); }
  /// The cells of a column, all of which the caller writes, for the statement at a position.
  double* overwrite(int32_t column, Block rows, size_t position);
  /// Writes cells, but for those that hold the values already, as in a run over a history that is
  /// as it was: reading them takes less than writing them and keeping what they held.
  void write(int32_t column, Block rows, const double* values, size_t position);
  /// The same with one value for all cells, which the table may write later.
  void write(int32_t column, Block rows, double value, size_t position);
  /// Where values that `write` is going to be given are worked out: in the cells if these are
  /// blank. Place -1 holds the row before.
  double* results_of(int32_t column, Block rows, size_t position);
  /// To be told of a call's memory before it takes in some rows. It has known those below `known`.
  void note_memory(CallMemory& memory, Block rows, int32_t known);

  DataPoolCenter& pool() const { return pool_; }
  CalculateCenter& calculator() const { return calculator_; }

 private:
  /// The values that cells had before.
  struct Overwritten {
    size_t position;  ///< of the statement that wrote
    int32_t column;
    Block rows;
    size_t values;  ///< where the old ones begin in `old_values_`
    bool were_blank;
  };
  struct Memory {
    size_t position;
    CallMemory* memory;
    Block rows;
    int32_t known;
  };
  struct Broadcast {
    double value;
    LineAlignedNumbers values;
    size_t size;
  };

  /// What twins say at the rows of a block.
  struct Twin {
    const Variable* first;
    Block rows;
    const double* values;
  };

  const double* call_values(Variable& call, Block rows, double start);
  const double* twin_values(Variable& call, Block rows, double start);
  const double* expression_values(Variable& variable, Block rows, double start);
  /// The last step goes to `target`, if that isn't null.
  const double* program_values(const Program& program, Block rows, double start, double* target);
  /// Of a number no more than a strip.
  const double* operand_values(const Operand& operand, Block rows, std::span<const StepRows> steps);
  bool can_ask_calls(Block rows) const { return nesting_ < most_column_levels && rows.first >= 1; }
  bool is_early(const Variable& call, Block rows) const;
  void run_group(std::span<const Early> calls);
  bool can_pair(Variable& call, Block rows);
  Follower follower_of(const Variable& call, Block rows);
  const double* leader_values(Variable& call, Block rows, double start);
  bool run_beside(std::span<const ColumnCall> calls, const Follower& follower);
  void put_back(const Overwritten& cells, int32_t first);
  void put_back_since(size_t cells, size_t memories);

  DataPoolCenter& pool_;
  CalculateCenter& calculator_;
  ColumnScratch scratch_;
  std::vector<Broadcast> broadcasts_;
  std::vector<Overwritten> overwritten_;
  std::vector<double> old_values_;
  std::vector<Memory> memories_;
  std::vector<Early> early_;       ///< what has been worked out ahead of its step
  std::vector<ColumnCall> group_;  ///< what is worked out at once
  std::vector<Twin> twins_;
  ColumnScratch twin_scratch_;
  Block block_;
  size_t position_ = 0;
  int nesting_ = 0;
};

/// What `column` receives: a call, the rows, and what a bar leaves at which the word writes
/// nothing.
///
/// Three ways to count: a row counts from row 0 of the table, as do the `cells` of a column; a
/// place counts from the first row of the block, as do all values and what `overwrite` gives.
struct ColumnCall {
  Columns& columns;
  Variable& variable;
  const Block rows;
  const double start;
  const size_t statement;  ///< the position of the one that it is worked out for

  /// The same call over other rows.
  ColumnCall over(Block others) const { return {columns, variable, others, start, statement}; }

  DataTable& table() const { return columns.pool().table(); }
  size_t size() const { return rows.size(); }
  size_t argument_count() const { return variable.arguments.size(); }
  /// The argument at a position, null for one that isn't there.
  Variable* argument(size_t position) const {
    return position < argument_count() ? variable.arguments[position] : nullptr;
  }

  /// The values of an argument, at the rows of the call or at others.
  const double* values(size_t position) const { return values(position, rows); }
  const double* values(size_t position, Block at) const {
    Variable* const found = argument(position);
    return found == nullptr ? nullptr : columns.values(*found, at, null_value);
  }
  /// The number that an argument is at every bar.
  std::optional<double> number(size_t position) const {
    const Variable* const found = argument(position);
    if (found == nullptr || found->kind != VariableKind::number) return std::nullopt;
    return found->value;
  }

  const double* everywhere(double value) const { return columns.everywhere(value, size()); }
  double* scratch() const { return columns.scratch(size()); }
  /// The cells of a column at the rows of the call, all of which the caller writes.
  double* overwrite(int32_t column) const { return columns.overwrite(column, rows, statement); }
  void write(int32_t column, const double* values) const {
    columns.write(column, rows, values, statement);
  }
  void write(int32_t column, double value) const { columns.write(column, rows, value, statement); }
  double* results_of(int32_t column) const { return columns.results_of(column, rows, statement); }
  /// Writes results that have been worked out there, and gives the cells.
  const double* keep(int32_t column, const double* results) const {
    write(column, results);
    return cells(column) + rows.first;
  }
  /// The values of an argument, which come to stand in a column, too.
  const double* stored(size_t position, int32_t column) const {
    const double* const found = values(position);
    if (found != nullptr && found != cells(column) + rows.first) write(column, found);
    return found;
  }
  /// What `value_at` gives at each row.
  template <typename ValueAt>
  const double* each_row(const ValueAt& value_at) const {
    double* const values = scratch();
    for (int32_t row = rows.first; row < rows.end; ++row) values[row - rows.first] = value_at(row);
    return values;
  }
  /// All cells of a column, from row 0 on.
  const double* cells(int32_t column) const { return table().cells(column).data(); }
};

}  // namespace quor
