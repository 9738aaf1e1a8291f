// What the words along the row axis share: their scans and the walk back to an event.
#pragma once

#include "core/calculate_center.h"
#include "core/data_pool_center.h"
#include "core/status.h"
#include "functions/base_func.h"

namespace quor {

/// The scan of a word that declares nothing.
inline int scan_count(const Call& call, size_t expected) {
  return call.argument_count() == expected ? status_ok : call.wrong_count();
}

/// Raises the look-back by the period that an argument gives at this row.
inline int raise_period_of(const Call& call, size_t position) {
  double period = null_value;
  const int status = call.evaluate(position, period);
  if (status == status_ok) call.pool.raise_period(to_int(period));
  return status;
}

/// The scan of a word with one look-back.
inline int scan_period(const Call& call, size_t expected, size_t position) {
  const int status = scan_count(call, expected);
  return status == status_ok ? raise_period_of(call, position) : status;
}

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
