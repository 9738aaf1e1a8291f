// The named lines of a compiled script.
#pragma once

#include <vector>

#include "core/data_pool_center.h"
#include "core/shape_management.h"
#include "engine/values.h"

namespace quor::engine {

/// The lines in the order of the script, each with the look of the record that draws it.
std::vector<Line> lines_of(const DataPoolCenter& pool, const ShapeManagement& drawings);

}  // namespace quor::engine
