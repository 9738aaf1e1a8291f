// What the words along the row axis share: the walk back to an event.
#pragma once

#include "core/calculate_center.h"
#include "functions/word_steps.h"

namespace quor {

/// The newest row up to this one at which the argument truncates to 1, whatever its statuses; -1 if
/// there is none.
inline int32_t newest_hit(const Call& call, size_t position) {
  for (int32_t row = call.row; row >= 0; --row) {
    double value = null_value;
    call.evaluate_at(position, row, value);
    if (to_int(value) == 1) return row;
  }
  return -1;
}

}  // namespace quor
