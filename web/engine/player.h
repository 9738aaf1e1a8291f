// Bars that come one by one, by the path that live data take.
#pragma once

#include "desk.h"
#include "host/studio/json.h"

namespace quor_host {

inline constexpr size_t most_steps = 1000;
inline constexpr size_t most_ticks = 16;

/// Each throws Refusal where play can't be.
/// From now on the chart ends in front of a row, whose bar comes next in so many ticks.
Json start_play(Desk& desk, size_t row, size_t ticks);
Json step_ticks(Desk& desk, size_t count);
/// Completes bars, the one that is forming first.
Json step_bars(Desk& desk, size_t count);
/// All bars again.
Json stop_play(Desk& desk);

}  // namespace quor_host
