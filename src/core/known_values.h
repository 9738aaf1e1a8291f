// Values of a call's arguments at rows that it comes to again and again.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/model.h"

namespace quor {

/// A value is known once its evaluation has left all results at its row and before as they were:
/// the next one would read the same and write the same. It is forgotten when one of them changes.
class KnownValues final : public CallMemory {
 public:
  /// Null for one that isn't known.
  const double* find(size_t position, int32_t row, const RowChanges& changes) {
    go_by_values(changes);
    const auto& values = values_[position];
    const auto place = static_cast<size_t>(row);
    return place < values.size() && values[place].is_known ? &values[place].value : nullptr;
  }

  /// The first of the rows from one on, or else `end`, at which the argument isn't known.
  int32_t known_end(size_t position, int32_t row, int32_t end, const RowChanges& changes) {
    go_by_values(changes);
    const auto& values = values_[position];
    end = std::min(end, static_cast<int32_t>(values.size()));
    while (row < end && values[static_cast<size_t>(row)].is_known) ++row;
    return row;
  }

  void learn(size_t position, int32_t row, double value) {
    auto& values = values_[position];
    const auto place = static_cast<size_t>(row);
    if (place >= values.size()) values.resize(place + 1);
    values[place] = {value, true};
  }

  static constexpr size_t most_arguments = 2;

 private:
  struct Value {
    double value = 0.0;
    bool is_known = false;
  };

  void drop_from(int32_t row) override {
    for (auto& values : values_) {
      values.resize(std::min(values.size(), static_cast<size_t>(row)));
    }
  }

  std::vector<Value> values_[most_arguments];  ///< by argument and row
};

}  // namespace quor
