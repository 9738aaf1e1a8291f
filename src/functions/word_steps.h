// Small steps that many words share: the answer, and what most of them do in scan mode.
#pragma once

#include "core/data_pool_center.h"
#include "core/value.h"
#include "functions/base_func.h"

namespace quor {

/// Leaves the value with the caller; gives status 0.
inline int answer(const Call& call, double value) {
  call.result = value;
  return 0;
}

/// Counts the arguments only.
inline int scan_count(const Call& call, size_t arguments) {
  return call.argument_count() == arguments ? 0 : call.wrong_count();
}

/// Counts, evaluates the period at `position` and raises the look-back by it. A period that fails
/// raises nothing and gives its status.
inline int scan_period(const Call& call, size_t arguments, size_t position) {
  if (call.argument_count() != arguments) return call.wrong_count();
  double period = null_value;
  const int status = call.evaluate(position, period);
  if (status == 0) call.pool.raise_period(to_int(period));
  return status;
}

/// As `scan_period` for a word that takes a period that fails for a null.
inline int scan_any_period(const Call& call, size_t arguments, size_t position) {
  if (call.argument_count() != arguments) return call.wrong_count();
  double period = null_value;
  call.evaluate(position, period);
  call.pool.raise_period(to_int(period));
  return 0;
}

}  // namespace quor
