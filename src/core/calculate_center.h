// Runs a compiled script: the value of a variable at a row, and the walk over rows and statements.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/columns.h"
#include "core/data_pool_center.h"
#include "core/plan.h"
#include "core/status.h"
#include "core/word_scratch.h"

namespace quor {

/// Throws std::runtime_error with "expression nested too deeply".
[[noreturn]] void refuse_nesting();

/// How a run over many rows is cut: the first rows and shorter runs go bar by bar, so that columns
/// are taken in the order of bars; then blocks of rows follow, each as long as all before it
/// together up to the longest.
struct BlockRule {
  int32_t shortest_run = 64;
  int32_t bars_first = 2;
  int32_t first_block = 30;
  int32_t longest_block = 1024;
};

class CalculateCenter {
 public:
  explicit CalculateCenter(DataPoolCenter& pool) : pool_(pool) {}
  CalculateCenter(const CalculateCenter&) = delete;
  CalculateCenter& operator=(const CalculateCenter&) = delete;

  /// Runs all statements: in scan mode once at row 0, else over the rows from `first_row` on. The
  /// first status other than 0 ends the run; what was written stays.
  Status calculate(int32_t first_row, bool scan, std::string& error);

  /// The value of a variable at a row outside a run, an evaluation like any other: what it writes
  /// into cells stays, and calls forget what rests on cells that have become others.
  Status evaluate_aside(Variable& variable, int32_t row, double& value);

  /// The value of a variable at any row. A status other than 0 comes with a text in `error`.
  /// `result` keeps the caller's start value where nothing is written.
  Status evaluate(Variable& variable, int32_t row, bool scan, std::string& error, double& result) {
    switch (variable.kind) {
      case VariableKind::field:
        result = pool_.table().cell(row, variable.column_index);
        return Status::ok;
      case VariableKind::number:
        result = variable.value;
        return Status::ok;
      case VariableKind::call:
        return evaluate_call(variable, row, scan, error, result);
      case VariableKind::expression:
        return evaluate_expression(variable, row, scan, error, result);
      default:
        return evaluate_other(variable, result);
    }
  }

  /// The value of a lowered expression at a row; `line` is that of its statement.
  Status evaluate_elements(Program& program, int32_t row, bool scan, int32_t line,
                           std::string& error, double& result);

  WordScratch& scratch() { return scratch_; }
  /// The result doesn't depend on the rule.
  void set_block_rule(const BlockRule& rule) { block_rule_ = rule; }
  /// The first row of the current run.
  int32_t start_row() const { return start_row_; }

  /// How many calls have been evaluated at a bar, and how often one has looked at a value that it
  /// knows or that a search goes through: what a bar costs, in a unit that doesn't depend on the
  /// machine.
  uint64_t work() const { return work_; }
  void note_work(uint64_t looks = 1) { work_ += looks; }
  /// Whether a statement went by columns in the last block that was calculated.
  bool went_by_columns(size_t statement) const {
    return statement < is_finished_.size() && is_finished_[statement] != 0;
  }

 private:
  /// What one evaluation of a program works with.
  struct Frame {
    DataTable::Row cells;
    double* partials;
    const int32_t row;
    const bool scan;
    std::string& error;
  };

  Status evaluate_call(Variable& variable, int32_t row, bool scan, std::string& error,
                       double& result);
  Status evaluate_expression(Variable& variable, int32_t row, bool scan, std::string& error,
                             double& result);
  static Status evaluate_other(const Variable& variable, double& result);
  Status evaluate_reference(Variable& variable, int32_t row, bool scan, std::string& error,
                            double& value);
  Status run_call(Variable& variable, int32_t row, bool scan, std::string& error, double& result);
  Status run_program(Program& program, int32_t row, bool scan, int32_t line, std::string& error,
                     double& result);
  Status operand_value(const Operand& operand, Frame& frame, double& value);
  Status run_steps(const Program& program, Frame& frame);
  static Status end_without_value(const Program& program, int32_t line, std::string& error);

  void refresh_column_indexes();
  Status scan_statements(std::string& error);
  void keep_plan();
  Status run_statements(int32_t first_row, std::string& error);
  void choose_statements(int32_t first, int32_t rows);
  Status run_chosen(int32_t first, int32_t rows, std::string& error);
  void load_calendar();
  Status run_range(std::span<const uint32_t> statements, int32_t first, int32_t end,
                   std::string& error);
  Status run_first_bars(std::span<const uint32_t> statements, Block rows, std::string& error);
  Status run_by_blocks(std::span<const uint32_t> statements, int32_t first, int32_t end,
                       std::string& error);
  Status run_block(std::span<const uint32_t> statements, Block rows, int32_t run_from,
                   std::string& error);
  void run_columns(std::span<const uint32_t> statements, Block rows, int32_t run_from);
  void run_early(std::span<const uint32_t> statements, Block rows, int32_t run_from);
  bool can_take(uint32_t statement, int32_t run_from) const;
  Status run_rows(std::span<const uint32_t> statements, Block rows, std::string& error);
  Status run_statement(Variable& statement, int32_t row, std::string& error);

  DataPoolCenter& pool_;
  WordScratch scratch_;
  uint64_t work_ = 0;
  int32_t start_row_ = 0;
  int nesting_ = 0;

  /// Where a run is.
  struct Place {
    int32_t row = 0;
    uint32_t statement = 0;
  };
  Place progress_;
  BlockRule block_rule_;
  uint64_t seen_layout_ = UINT64_MAX;
  Columns columns_{pool_, *this};
  Plan plan_;
  std::vector<uint32_t> statements_;   ///< the positions of those that a run calculates
  std::vector<uint32_t> bar_by_bar_;   ///< of those that a block leaves
  std::vector<Columns::Early> early_;  ///< what a block works out first
  std::vector<uint8_t> is_finished_;   ///< for the block, by position
};

}  // namespace quor
