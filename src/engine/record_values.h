// Drawing records as values, for the facade.
#pragma once

#include "core/base_shape.h"
#include "engine/values.h"

namespace quor::engine {

Record values_of(const BaseShape& record);

}  // namespace quor::engine
