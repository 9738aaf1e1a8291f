// Which rows of a table have changed since some moment.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace quor {

class RowChanges {
 public:
  /// The moment behind the last change.
  uint64_t now() const { return now_; }

  void note(int32_t row) {
    while (!changes_.empty() && changes_.back().row >= row) changes_.pop_back();
    changes_.push_back({++now_, row});
  }

  /// The first row that has changed since a moment; where none has, a row behind all.
  int32_t first_since(uint64_t moment) const {
    if (moment == now_) return std::numeric_limits<int32_t>::max();
    return std::ranges::upper_bound(changes_, moment, {}, &Change::moment)->row;
  }

 private:
  struct Change {
    uint64_t moment;
    int32_t row;
  };

  uint64_t now_ = 0;
  std::vector<Change> changes_;  ///< by moment and by row; later ones further up don't matter
};

}  // namespace quor
