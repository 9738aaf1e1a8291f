// What a run does at each of its bars, worked out before the first one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "core/data_table.h"
#include "core/program.h"

namespace quor {

struct Variable;

/// Where a run finds an operand: the cells of a column, or one number for all rows.
struct Place {
  const double* values;
  int64_t mask;  ///< all ones for a column, 0 for a number

  double at(int32_t row) const { return values[row & mask]; }
};

/// A step whose operands are numbers and cells only, so that nothing can go wrong with it.
struct PlainStep {
  OpCode op;
  Place left;
  Place right;
  double* result;
};

/// A statement as a run calculates it.
struct Task {
  enum class Kind : uint8_t {
    number,    ///< the statement's number, which SET may change
    constant,  ///< one number in one cell, for a call that does nothing else
    call,      ///< one call and nothing else
    plain,     ///< plain steps, and the value of a place
    formula,   ///< any other program
  };

  Variable* statement;
  Kind kind;
  int32_t column;  ///< where the value goes; -1 for nowhere
  double constant = 0.0;
  Place place = {nullptr, 0};  ///< of the value of a plain formula
  std::span<const PlainStep> steps = {};
};

/// Holds for one run: until the next one rows may come, and with them the cells move.
class RunPlan {
 public:
  void make(std::span<Variable* const> statements, const DataTable& table);
  std::span<const Task> tasks() const { return tasks_; }

 private:
  Task task_of(Variable& statement, const DataTable& table);
  bool bind(Program& program, const DataTable& table, Task& task);

  std::vector<Task> tasks_;
  std::vector<PlainStep> steps_;
};

}  // namespace quor
