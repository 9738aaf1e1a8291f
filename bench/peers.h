// The drawn lines by libraries that others use for them, where these are installed. They sum in
// another order, or know other averages, so that their values are near the engine's at best.
#pragma once

#include <string_view>

#include "exact_loops.h"

namespace quor_bench {

/// Null without a library for these lines.
LoopOverLines peer_of(std::string_view name);

}  // namespace quor_bench
