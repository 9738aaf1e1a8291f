// The truth that blocks and memories are held against.
#pragma once

#include <cstdint>
#include <limits>

#include "interface/instances.h"

namespace quor_test {

/// A rule by which no run is long enough for blocks.
inline constexpr quor::BlockRule bar_by_bar = {.shortest_run = std::numeric_limits<int32_t>::max()};

/// Has the compiled script go bar by bar, and its calls remember nothing.
inline void go_by_plain_bars(int64_t handle) {
  quor::ScriptParser& parser = quor::find_instance(handle)->parser;
  parser.calculator().set_block_rule(bar_by_bar);
  parser.pool().script.may_remember = false;
}

}  // namespace quor_test
