// The evaluation of variables and expressions.
#include <stdexcept>

#include "core/calculate_center.h"
#include "core/call.h"
#include "core/status.h"
#include "functions/base_func.h"
#include "text/numbers.h"

namespace quor {
namespace {

// Neither this nor the comparisons below branch: which way a market goes can't be foretold.
double truth(bool value) { return static_cast<double>(value); }

/// Nulls are tested nowhere: what they give falls out of NaN arithmetic and of the comparisons, so
/// that the logical operators take a null for true.
double reduce(OpCode op, double left, double right) {
  switch (op) {
    case op_or:
      return truth((left != 0.0) | (right != 0.0));
    case op_and:
      return truth((left != 0.0) & (right != 0.0));
    case op_equal:
      return truth(nearly_equal(left, right));
    case op_not_equal:
      return truth(!nearly_equal(left, right));
    case op_less_equal:
      return truth(left <= right);
    case op_less:
      return truth(!nearly_equal(left, right) & (left < right));
    case op_greater_equal:
      return truth(left >= right);
    case op_greater:
      return truth(!nearly_equal(left, right) & (left > right));
    case op_minus:
    case op_unary_minus:
      return left - right;
    case op_plus:
      return left + right;
    case op_remainder:
      return nearly_equal(right, 0.0) ? 0.0 : remainder_of(to_int(left), to_int(right));
    case op_times:
      return left * right;
    case op_divide:
      return nearly_equal(right, 0.0) ? 0.0 : left / right;
    default:
      return 0.0;  // a "(" that was never closed
  }
}

/// Counts a level of nesting for as long as it lives.
class NestingGuard {
 public:
  explicit NestingGuard(int& nesting) : nesting_(nesting) {
    if (nesting_ >= max_nesting) refuse_nesting();
    ++nesting_;
  }
  ~NestingGuard() { --nesting_; }
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;

 private:
  int& nesting_;
};

double literal_value(std::string_view text) {
  if (text.size() < 2) return 0.0;
  return leading_number_after_blanks(text.substr(1, text.size() - 2));
}

}  // namespace

void refuse_nesting() { throw std::runtime_error("expression nested too deeply"); }

// What runs at every bar of every statement is inlined whatever its size: an operand is mostly a
// number or a cell, and costs less than the call to fetch it.
[[gnu::always_inline]] inline Status CalculateCenter::run_call(Variable& variable, int32_t row,
                                                               bool scan, std::string& error,
                                                               double& result) {
  if (variable.function == nullptr) {
    result = null_value;
    return Status::ok;
  }
  if (scan) pool_.script.invoked_functions.insert(variable.function_word);
  const NestingGuard guard(nesting_);
  return variable.function->execute({pool_, *this, variable, row, scan, error, result});
}

Status CalculateCenter::evaluate_call(Variable& variable, int32_t row, bool scan,
                                      std::string& error, double& result) {
  return run_call(variable, row, scan, error, result);
}

Status CalculateCenter::evaluate_expression(Variable& variable, int32_t row, bool scan,
                                            std::string& error, double& result) {
  if (variable.text.starts_with('\'')) {
    result = literal_value(variable.text);
    return Status::ok;
  }
  if (variable.elements.empty()) {
    if (variable.text == "DRAWNULL") {
      result = null_value;
      return Status::ok;
    }
    append_error(error, variable.text, variable.line);
    return Status::undefined_argument;
  }
  const NestingGuard guard(nesting_);
  return run_program(variable.program, row, scan, variable.line, error, result);
}

Status CalculateCenter::evaluate_other(const Variable& variable, double& result) {
  const bool missing = variable.kind == VariableKind::missing;
  result = missing ? null_value : 0.0;
  return missing ? Status::variable_gone : Status::ok;
}

Status CalculateCenter::evaluate_reference(Variable& variable, int32_t row, bool scan,
                                           std::string& error, double& value) {
  if (variable.kind == VariableKind::call) return run_call(variable, row, scan, error, value);
  return evaluate(variable, row, scan, error, value);
}

[[gnu::always_inline]] inline Status CalculateCenter::operand_value(const Operand& operand,
                                                                    Frame& frame, double& value) {
  switch (operand.source) {
    case Operand::Source::number:
      value = operand.number;
      return Status::ok;
    case Operand::Source::slot:
      value = frame.slots[operand.slot];
      return Status::ok;
    case Operand::Source::field:
      value = frame.cells[operand.variable->column_index];
      return Status::ok;
    case Operand::Source::reference:
      break;
  }
  // By a copy, so that a plain value needn't go through memory.
  double written = value;
  const Status status =
      evaluate_reference(*operand.variable, frame.row, frame.scan, frame.error, written);
  value = written;
  // A call may have added columns.
  frame.cells = pool_.table().row(frame.row);
  return status;
}

[[gnu::always_inline]] inline Status CalculateCenter::run_steps(const Program& program,
                                                                Frame& frame) {
  for (const Step& step : program.steps) {
    double right = 0.0;
    Status status = operand_value(step.right, frame, right);
    if (failed(status)) return status;
    if (step.kind == Step::Kind::reduce) {
      double left = 0.0;
      status = operand_value(step.left, frame, left);
      if (failed(status)) return status;
      frame.slots[step.slot] = reduce(step.op, left, right);
    } else if (step.kind == Step::Kind::negate) {
      frame.slots[step.slot] = -right;
    }
  }
  return Status::ok;
}

[[gnu::always_inline]] inline Status CalculateCenter::run_program(Program& program, int32_t row,
                                                                  bool scan, int32_t line,
                                                                  std::string& error,
                                                                  double& result) {
  Frame frame{pool_.table().row(row), program.slots.data(), row, scan, error};
  const Status status = run_steps(program, frame);
  if (failed(status)) return status;
  // The caller's start value goes to a lone reference.
  if (program.ending == Ending::value) return operand_value(program.result, frame, result);
  return end_without_value(program, line, error);
}

Status CalculateCenter::evaluate_elements(Program& program, int32_t row, bool scan, int32_t line,
                                          std::string& error, double& result) {
  return run_program(program, row, scan, line, error, result);
}

Status CalculateCenter::end_without_value(const Program& program, int32_t line,
                                          std::string& error) {
  switch (program.ending) {
    case Ending::missing_operand:
      append_error(error, {}, line);
      return Status::operand_missing;
    case Ending::missing_variable:
      return Status::variable_gone;
    case Ending::bare_reference:
      append_error(error, {}, program.result.variable->line);
      return Status::bare_reference;
    default:
      return Status::ok;
  }
}

[[gnu::always_inline]] inline Status CalculateCenter::task_value(const Task& task, int32_t row,
                                                                 std::string& error,
                                                                 double& result) {
  Variable& statement = *task.statement;
  switch (task.kind) {
    case Task::Kind::number:
      result = statement.value;
      return Status::ok;
    case Task::Kind::constant:
      result = task.constant;
      return Status::ok;
    case Task::Kind::call:
      return run_call(*statement.program.result.variable, row, false, error, result);
    case Task::Kind::plain:
      for (const PlainStep& step : task.steps) {
        *step.result = reduce(step.op, step.left.at(row), step.right.at(row));
      }
      result = task.place.at(row);
      return Status::ok;
    case Task::Kind::formula:
      break;
  }
  return run_program(statement.program, row, false, statement.line, error, result);
}

Status CalculateCenter::run_rows(std::span<const Task> tasks, int32_t first, int32_t end,
                                 std::string& error) {
  for (int32_t row = first; row < end; ++row) {
    for (const Task& task : tasks) {
      double result = 0.0;
      const Status status = task_value(task, row, error, result);
      if (failed(status)) return status;
      if (task.column != -1) pool_.table().set_cell(row, task.column, result);
    }
  }
  return Status::ok;
}

}  // namespace quor
