// Lines whose values alone are asked for.
#pragma once

#include "core/data_pool_center.h"

namespace quor::engine {

/// Takes out of a compiled script the statements that do nothing but mark every bar of a line as
/// shown, of which there is one for each line. The records of the lines stay.
void leave_lines_undrawn(DataPoolCenter& pool);

}  // namespace quor::engine
