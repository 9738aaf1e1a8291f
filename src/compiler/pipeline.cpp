#include "compiler/pipeline.h"

#include <algorithm>
#include <new>
#include <vector>

#include "compiler/report.h"
#include "compiler/rewriters.h"
#include "compiler/scanner.h"
#include "compiler/settings.h"
#include "compiler/statements.h"
#include "core/status.h"
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
  context.script.constants.insert_or_assign(std::string(pieces[0]), leading_number(number));
  return true;
}

/// Leaves nothing to run or evaluate. Words rely on what their trial run has set up.
void drop_statements(CompileContext& context) {
  context.script.argument_variables.clear();
  context.script.statement_list.clear();
}

std::string report_of_failure(Status status, std::string_view error) {
  const ErrorParts parts = split_error(error);
  return failure_report(status, parts.message, leading_integer(parts.line));
}

}  // namespace

Status compile_script(CompileContext& context, std::string& script, std::string_view parameters,
                      std::string_view lines, std::string& error) {
  if (script.empty()) return Status::ok;
  context.reset();
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
