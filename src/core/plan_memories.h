// What the calls of a script may remember from bar to bar.
#pragma once

#include "core/plan_walk.h"

namespace quor {

/// Sets `Variable::remembering` and `Variable::for_one_run` of the calls of a walk over the script.
void plan_memories(const PlanWalk& walk);

}  // namespace quor
