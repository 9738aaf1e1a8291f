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

/// Folds the first `count` values, oldest first. A null is passed over, except at the oldest place,
/// where it stays. Nothing to fold gives 0.0.
template <Extreme extreme>
double extreme_of(const Window& window, size_t count) {
  if (count == 0) return 0.0;
  double outermost = window[0];
  for (size_t i = 1; i < count; ++i) {
    if (beats<extreme>(window[i], outermost)) outermost = window[i];
  }
  return outermost;
}

}  // namespace quor
