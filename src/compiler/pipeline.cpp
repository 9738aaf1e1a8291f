#include "compiler/pipeline.h"

#include <algorithm>
#include <new>
#include <vector>

#include "compiler/expressions.h"
#include "compiler/report.h"
#include "compiler/rewriters.h"
#include "compiler/scanner.h"
#include "compiler/settings.h"
#include "compiler/statements.h"
#include "core/status.h"
#include "tables/field_table.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace quor {
namespace {

/// A slot with the line that its errors report.
struct Slot {
  std::string text;
  int32_t line;
};

/// Stores the constant of a slot `CONST name:number`; false for a slot of any other form.
bool take_constant(CompileContext& context, std::string_view slot) {
  constexpr std::string_view opening = "CONST ";
  if (!slot.starts_with(opening)) return false;
  const auto pieces = split(slot.substr(opening.size()), ":");
  if (pieces.size() != 2) return false;
  std::string number(pieces[1]);
  std::ranges::replace(number, '?', '-');
  std::ranges::replace(number, '^', '-');
  context.constants.insert_or_assign(std::string(pieces[0]), leading_number(number));
  return true;
}

/// Leaves nothing to run or evaluate. Words rely on what their trial run has set up.
void drop_statements(CompileContext& context) {
  context.argument_variables.clear();
  context.pool.statement_list.clear();
}

std::string report_of_failure(Status status, std::string_view error) {
  const ErrorParts parts = split_error(error);
  return failure_report(status, parts.message, leading_integer(parts.line));
}

}  // namespace

void reset_compile_state(CompileContext& context) {
  // The pool comes last: what points into it must be gone even if memory runs out in there.
  context.constants.clear();
  context.argument_variables.clear();
  std::erase_if(context.declared_names,
                [](const auto& entry) { return !reserved_field_id(entry.first); });
  context.calculator.shapes().clear();
  context.pool.reset();
}

Variable& add_reserved_variable(CompileContext& context, std::string_view word, uint32_t column_id,
                                bool add_column) {
  DataPoolCenter& pool = context.pool;
  // A word that is there already brings its own column in. What it names may be gone with the next
  // compile, so the elements aren't kept.
  std::vector<MathElement> elements;
  bool whole_series = false;
  std::string unread;
  ignore_status(build_elements(
      context, {.text = word, .caller_kind = VariableKind::field, .allow_unknown = true},
      whole_series, elements, unread));
  Variable& variable = pool.make_reserved_variable(word, column_id);
  variable.whole_series = whole_series;
  if (add_column && pool.table().column_index_of(column_id) == -1) {
    variable.column_index = pool.table().add_column(column_id);
  }
  context.declared_names.try_emplace(std::string(word), column_id);
  return variable;
}

Status compile_script(CompileContext& context, std::string& script, std::string_view parameters,
                      std::string_view lines, std::string& error) {
  if (script.empty()) return Status::ok;
  reset_compile_state(context);
  std::vector<std::string> slots;
  Status status = split_statements(script, slots, error);
  if (failed(status)) return status;
  status = rewrite_statements(context, slots, error);
  if (failed(status)) return status;
  load_settings(context, parameters, lines);

  // Every constant takes effect for the whole script, whatever its place.
  std::vector<Slot> statements;
  for (size_t i = 0; i < slots.size(); ++i) {
    if (!take_constant(context, slots[i])) {
      statements.push_back({std::move(slots[i]), static_cast<int32_t>(i)});
    }
  }
  for (const Slot& statement : statements) {
    status = compile_statement(context, statement.text, statement.line, error);
    if (failed(status)) return status;
  }
  return Status::ok;
}

std::string pre_parse(CompileContext& context, std::string script, std::string_view parameters,
                      std::string_view lines) {
  try {
    std::string error;
    Status status = compile_script(context, script, upper_case(parameters), lines, error);
    if (!failed(status)) status = context.calculator.calculate(0, true, error);
    if (failed(status)) return report_of_failure(status, error);
    return success_report(context.pool, error);
  } catch (const std::bad_alloc& fault) {
    drop_statements(context);
    return failure_report(Status::exception, fault.what(), 0);
  } catch (const std::exception& fault) {
    return failure_report(Status::exception, fault.what(), 0);
  } catch (...) {
    return failure_report(Status::exception, {}, 0);
  }
}

}  // namespace quor
