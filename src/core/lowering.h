// From the element list of an expression to the program that runs.
#pragma once

#include <vector>

#include "core/model.h"

namespace quor {

/// Records the walk over a finished list. Which steps it makes doesn't depend on any value: the
/// walk keeps two stacks, shifts an operator that binds tighter than the one on top, and else
/// reduces.
Program lower(const std::vector<MathElement>& elements);

/// Stores the finished list of a variable's right-hand side and lowers it.
void set_elements(Variable& variable, std::vector<MathElement> list);

}  // namespace quor
