// Runs a compiled script: the value of a variable at a row, and the walk over rows and statements.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/data_pool_center.h"
#include "core/run_plan.h"
#include "core/status.h"
#include "core/word_scratch.h"

namespace quor {

/// How deep variables may nest. A call and its argument are two levels. A level takes at most half
/// a kilobyte of stack in an optimised build, so that the deepest script fits into a quarter of the
/// one megabyte that a thread of a Windows host has.
inline constexpr int max_nesting = 512;

/// Throws std::runtime_error with "expression nested too deeply".
[[noreturn]] void refuse_nesting();

class CalculateCenter {
 public:
  explicit CalculateCenter(DataPoolCenter& pool) : pool_(pool) {}
  CalculateCenter(const CalculateCenter&) = delete;
  CalculateCenter& operator=(const CalculateCenter&) = delete;

  /// Runs all statements: in scan mode once at row 0, else over the rows from `first_row` on. The
  /// first status other than 0 ends the run; what was written stays.
  Status calculate(int32_t first_row, bool scan, std::string& error);

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
  /// The first row of the current run.
  int32_t start_row() const { return start_row_; }

 private:
  /// What one evaluation of a program works with.
  struct Frame {
    DataTable::Row cells;
    double* slots;
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
  Status run_statements(int32_t first_row, std::string& error);
  void load_calendar();
  Status run_rows(std::span<const Task> tasks, int32_t first, int32_t end, std::string& error);
  Status task_value(const Task& task, int32_t row, std::string& error, double& result);

  DataPoolCenter& pool_;
  WordScratch scratch_;
  int32_t start_row_ = 0;
  int nesting_ = 0;
  RunPlan plan_;
};

}  // namespace quor
