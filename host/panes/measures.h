// The numbers by which axes are laid out, the same in pictures and on the page. Lengths in pixels.
#pragma once

#include <cstddef>

namespace quor_host {

/// Between the marks of the time axis, at least.
inline constexpr double time_mark_room = 46.0;
/// Between ticks: as much as one likes, and as little as there may be.
inline constexpr double tick_room = 54.0;
inline constexpr double least_tick_room = 18.0;
/// Ticks that are sought for at closer distances than one likes.
inline constexpr size_t enough_ticks = 3;

}  // namespace quor_host
