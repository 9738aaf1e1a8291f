// What many words do in scan mode.
#pragma once

#include "core/base_func.h"
#include "core/call.h"
#include "core/value.h"

namespace quor {

/// Raises the look-back by the period that an argument gives at this row. A period that fails
/// raises nothing.
inline Status raise_period_of(const Call& call, size_t position) {
  double period = null_value;
  const Status status = call.evaluate(position, period);
  if (!failed(status)) call.script().raise_period(to_int(period));
  return status;
}

/// The scan of a word with one look-back.
inline Status scan_period(const Call& call, size_t expected, size_t position) {
  const Status status = call.check_count(expected);
  return !failed(status) ? raise_period_of(call, position) : status;
}

/// As `scan_period`, whatever the status of the period.
inline Status scan_unchecked_period(const Call& call, size_t expected, size_t position) {
  const Status status = call.check_count(expected);
  if (!failed(status)) ignore_status(raise_period_of(call, position));
  return status;
}

}  // namespace quor
