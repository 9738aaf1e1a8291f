// The evaluation of variables and expressions.
#include <stdexcept>

#include "core/base_func.h"
#include "core/calculate_center.h"
#include "core/call.h"
#include "core/reduce.h"
#include "core/status.h"
#include "text/numbers.h"

namespace quor {
namespace {

double reduce(OpCode op, double left, double right) {
  // Without a branch for a truth: which way a market goes can't be foretold.
  return with_operator(op,
                       [=](const auto& apply) { return static_cast<double>(apply(left, right)); });
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
  ++work_;
  return variable.function->execute({pool_, *this, variable, row, scan, error, result});
}

Status CalculateCenter::evaluate_call(Variable& variable, int32_t row, bool scan,
                                      std::string& error, double& result) {
  return run_call(variable, row, scan, error, result);
}

Status CalculateCenter::evaluate_expression(Variable& variable, int32_t row, bool scan,
                                            std::string& error, double& result) {
  if (variable.is_text()) {
    result = literal_value(variable.text);
    return Status::ok;
  }
  if (variable.elements.empty()) {
    if (variable.is_draw_null()) {
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
    case Operand::Source::partial:
      value = frame.partials[operand.partial];
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
      frame.partials[step.partial] = reduce(step.op, left, right);
    } else if (step.kind == Step::Kind::negate) {
      frame.partials[step.partial] = -right;
    }
  }
  return Status::ok;
}

[[gnu::always_inline]] inline Status CalculateCenter::run_program(Program& program, int32_t row,
                                                                  bool scan, int32_t line,
                                                                  std::string& error,
                                                                  double& result) {
  Frame frame{pool_.table().row(row), program.partials.data(), row, scan, error};
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

[[gnu::always_inline]] inline Status CalculateCenter::run_statement(Variable& statement,
                                                                    int32_t row,
                                                                    std::string& error) {
  double result = statement.value;
  if (statement.kind != VariableKind::number) {
    result = 0.0;
    const Status status = run_program(statement.program, row, false, statement.line, error, result);
    if (failed(status)) return status;
  }
  const bool has_value =
      statement.kind == VariableKind::number || statement.kind == VariableKind::expression;
  if (has_value && statement.column_id != no_column) {
    pool_.table().set_cell(row, statement.column_index, result);
  }
  return Status::ok;
}

Status CalculateCenter::run_rows(std::span<const uint32_t> statements, Block rows,
                                 std::string& error) {
  for (progress_.row = rows.first; progress_.row < rows.end; ++progress_.row) {
    for (const uint32_t position : statements) {
      progress_.statement = position;
      const Status status =
          run_statement(*pool_.script.statement_list[position], progress_.row, error);
      if (failed(status)) return status;
    }
  }
  return Status::ok;
}

}  // namespace quor
