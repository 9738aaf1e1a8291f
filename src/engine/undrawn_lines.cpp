#include "engine/undrawn_lines.h"

#include <algorithm>
#include <unordered_set>

#include "drawing/shapes.h"

namespace quor::engine {
namespace {

/// The call of a statement that draws a line at every bar; null for any other statement.
const Variable* line_call_of(const Variable& statement) {
  const Variable* call = statement.program.lone_reference();
  if (call == nullptr || statement.column_id != no_column || call->arguments.size() < 2)
    return nullptr;
  const Variable* shown = call->arguments[0];
  const Variable* line = call->arguments[1];
  const bool is_line = dynamic_cast<const PolylineShape*>(call->shape.get()) != nullptr &&
                       call->aux_column_indexes.size() == 1 && shown != nullptr &&
                       shown->kind == VariableKind::number && line != nullptr &&
                       line->kind == VariableKind::field && line->has_column();
  return is_line ? call : nullptr;
}

/// The calls that anything but a statement of its own evaluates.
std::unordered_set<const Variable*> calls_inside(const CompiledScript& script) {
  std::unordered_set<const Variable*> calls;
  for (const Variable* variable : script.variable_list) {
    calls.insert(variable->arguments.begin(), variable->arguments.end());
    if (line_call_of(*variable) != nullptr) continue;
    for (const MathElement& element : variable->elements) calls.insert(element.variable);
  }
  return calls;
}

}  // namespace

void leave_lines_undrawn(DataPoolCenter& pool) {
  const auto others = calls_inside(pool.script);
  std::erase_if(pool.script.statement_list, [&](const Variable* statement) {
    const Variable* call = line_call_of(*statement);
    if (call == nullptr || others.contains(call)) return false;
    pool.table().leave_unread(call->aux_column_indexes[0]);
    return true;
  });
  pool.script.planned_layout.reset();
}

}  // namespace quor::engine
