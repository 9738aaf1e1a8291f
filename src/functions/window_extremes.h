// The greatest and the smallest value of a window.
#pragma once

#include <cstddef>

#include "core/data_table.h"

namespace quor {

enum class Extreme { greatest, smallest };

/// Whether `a` lies further out than `b`; false for nulls and for equal values.
template <Extreme extreme>
constexpr bool beats(double a, double b) {
  return extreme == Extreme::greatest ? a > b : a < b;
}

/// Where the outermost of the first `count` values stands, the oldest of equal ones. A null is
/// passed over, except at the oldest place, where it stays. 0 for nothing to search.
template <Extreme extreme>
size_t place_of_extreme(const Window& window, size_t count) {
  size_t place = 0;
  if (count == 0) return place;
  double outermost = window[0];
  for (size_t i = 1; i < count; ++i) {
    if (!beats<extreme>(window[i], outermost)) continue;
    outermost = window[i];
    place = i;
  }
  return place;
}

/// The value at that place; 0.0 for nothing to search.
template <Extreme extreme>
double extreme_of(const Window& window, size_t count) {
  return count == 0 ? 0.0 : window[place_of_extreme<extreme>(window, count)];
}

}  // namespace quor
