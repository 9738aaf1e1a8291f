// Loops over rows that each wait for their own last result, taken several at once.
#pragma once

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace quor {

/// Hands the lanes from `next` on to `run`, as arrays of `count`, as long as there are enough.
template <size_t count, typename Lane, typename Run>
void in_groups_of(const std::vector<Lane>& lanes, size_t& next, const Run& run) {
  for (; lanes.size() - next >= count; next += count) {
    [&]<size_t... i>(std::index_sequence<i...>) {
      run(std::array<Lane, count>{lanes[next + i]...});
    }
    (std::make_index_sequence<count>());
  }
}

/// Hands lanes to `run` by four, by two and one by one.
template <typename Lane, typename Run>
void in_groups(const std::vector<Lane>& lanes, const Run& run) {
  size_t next = 0;
  in_groups_of<4>(lanes, next, run);
  in_groups_of<2>(lanes, next, run);
  in_groups_of<1>(lanes, next, run);
}

}  // namespace quor
