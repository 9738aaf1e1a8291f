// Small steps that many words share: the answer, and what most of them do in scan mode.
#pragma once

#include "core/data_pool_center.h"
#include "core/status.h"
#include "core/value.h"
#include "functions/base_func.h"

namespace quor {

/// Leaves the value with the caller; gives status 0.
inline int answer(const Call& call, double value) {
  call.result = value;
  return status_ok;
}

/// The scan of a word that declares nothing: counts the arguments.
inline int scan_count(const Call& call, size_t expected) {
  return call.argument_count() == expected ? status_ok : call.wrong_count();
}

/// Raises the look-back by the period that an argument gives at this row. A period that fails
/// raises nothing.
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

/// The same for a word that takes a period that fails for a null.
inline int scan_any_period(const Call& call, size_t expected, size_t position) {
  const int status = scan_count(call, expected);
  if (status == status_ok) raise_period_of(call, position);
  return status;
}

}  // namespace quor
