// What the calls of a script may remember from bar to bar.
#pragma once

#include "core/compiled_script.h"

namespace quor {

/// Sets `Variable::remembering` and `Variable::in_full` of every call that a statement evaluates.
void plan_memories(CompiledScript& script);

}  // namespace quor
