// What the calls of a script may remember from bar to bar.
#pragma once

#include "core/compiled_script.h"
#include "core/data_table.h"

namespace quor {

/// Sets `Variable::remembering` and `Variable::for_one_run` of every call that a statement
/// evaluates, and `CompiledScript::shares_columns`.
void plan_memories(CompiledScript& script, const DataTable& table);

}  // namespace quor
