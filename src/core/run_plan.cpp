#include "core/run_plan.h"

#include <algorithm>

#include "core/model.h"
#include "functions/base_func.h"

namespace quor {
namespace {

/// None for an operand that has to be evaluated, and for a field without a column, which may get
/// one during the run.
std::optional<Place> place_of(const Operand& operand, const Program& program,
                              const DataTable& table) {
  switch (operand.source) {
    case Operand::Source::number:
      return Place{&operand.number, 0};
    case Operand::Source::slot:
      return Place{&program.slots[operand.slot], 0};
    case Operand::Source::field:
    case Operand::Source::reference:
      break;
  }
  const Variable* field = operand.variable;
  if (field == nullptr || field->kind != VariableKind::field) return std::nullopt;
  const std::span<const double> cells = table.cells(field->column_index);
  return cells.empty() ? std::nullopt : std::optional(Place{cells.data(), -1});
}

}  // namespace

void RunPlan::make(std::span<Variable* const> statements, const DataTable& table) {
  tasks_.clear();
  steps_.clear();
  size_t steps = 0;
  for (const Variable* statement : statements) steps += statement->program.steps.size();
  // Tasks point into the list, so it must not grow while it is filled.
  steps_.reserve(steps);
  for (Variable* statement : statements) tasks_.push_back(task_of(*statement, table));
}

Task RunPlan::task_of(Variable& statement, const DataTable& table) {
  const bool has_value =
      statement.kind == VariableKind::number || statement.kind == VariableKind::expression;
  const bool stores = has_value && statement.column_id != no_column;
  Task task{&statement, Task::Kind::formula, stores ? statement.column_index : -1};
  if (statement.kind == VariableKind::number) {
    task.kind = Task::Kind::number;
    return task;
  }
  const Variable* call = statement.program.lone_reference();
  if (call == nullptr || call->kind != VariableKind::call) {
    if (bind(statement.program, table, task)) task.kind = Task::Kind::plain;
    return task;
  }
  task.kind = Task::Kind::call;
  if (stores || call->function == nullptr) return task;
  if (const auto cell = call->function->constant_cell(*call)) {
    task = {&statement, Task::Kind::constant, cell->column, cell->value};
  }
  return task;
}

bool RunPlan::bind(Program& program, const DataTable& table, Task& task) {
  const auto value = place_of(program.result, program, table);
  if (program.ending != Ending::value || !value) return false;
  const size_t first = steps_.size();
  for (const Step& step : program.steps) {
    const auto left = place_of(step.left, program, table);
    const auto right = place_of(step.right, program, table);
    if (step.kind != Step::Kind::reduce || !left || !right) return false;
    steps_.push_back({step.op, *left, *right, &program.slots[step.slot]});
  }
  task.place = *value;
  task.steps = std::span<const PlainStep>(steps_).subspan(first);
  return true;
}

}  // namespace quor
