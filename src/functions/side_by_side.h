// Loops over rows that each wait for their own last result, taken several at once.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>

#include "core/columns.h"

namespace quor {

/// Hands calls and arrays of their lanes to `run`, by `count`, as long as there are enough of them.
/// False at a lane without a series, which the calls from there on don't get over.
template <size_t count, typename LaneOf, typename Run>
bool in_groups_of(std::span<const ColumnCall>& calls, const LaneOf& lane_of, const Run& run) {
  for (; calls.size() >= count; calls = calls.subspan(count)) {
    const auto lanes = [&]<size_t... i>(std::index_sequence<i...>) {
      return std::array{lane_of(calls[i])...};
    }
    (std::make_index_sequence<count>());
    if (std::ranges::any_of(lanes, [](const auto& lane) { return lane.x == nullptr; }))
      return false;
    run(calls.template first<count>(), lanes);
  }
  return true;
}

/// The same by four, by three, by two and one by one.
template <typename LaneOf, typename Run>
bool in_groups(std::span<const ColumnCall> calls, const LaneOf& lane_of, const Run& run) {
  return in_groups_of<4>(calls, lane_of, run) && in_groups_of<3>(calls, lane_of, run) &&
         in_groups_of<2>(calls, lane_of, run) && in_groups_of<1>(calls, lane_of, run);
}

}  // namespace quor
