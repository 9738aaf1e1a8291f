// The step of an average that weighs a value against the one before, without its division.
#pragma once

#include <cstddef>
#include <cstdint>

#include "functions/fused_quotient.h"
#include "platform/processor.h"

namespace quor {

/// (a*prev + b*x) / d for whole numbers, of which the size of a is 2^31 at most and d lies from 1
/// to there.
///
/// A `fused_quotient` whose small product doesn't wait for the sum, but is put together of the
/// rests of both parts. It then lacks the bits that these lose where they cancel out, some 2^-53 of
/// a*prev. As long as the value is 2^-15 of the one before or more, that and all other errors come
/// to less than the 2d-th of a unit by which the quotient keeps away from a midpoint.
class WeightedStep {
 public:
  static constexpr int64_t largest = int64_t{1} << 31;

  WeightedStep() = default;
  WeightedStep(int64_t a, int64_t b, int64_t d)
      : a_(static_cast<double>(a)), b_(static_cast<double>(b)) {
    const Divisor divisor = divisor_of(static_cast<uint64_t>(d));
    reciprocal_ = divisor.reciprocal;
    a_rest_ = a_ * divisor.rest;
    b_rest_ = b_ * divisor.rest;
  }

  double next(double x, double prev) const {
    const double rest = __builtin_fma(prev, a_rest_, x * b_rest_);
    return __builtin_fma(a_ * prev + b_ * x, reciprocal_, rest);
  }

 private:
  double a_ = 0.0;
  double b_ = 0.0;
  double reciprocal_ = 0.0;
  double a_rest_ = 0.0;
  double b_rest_ = 0.0;
};

/// Whether values that a `WeightedStep` has made, of which one more stands before the first, are
/// those of divisions: all are zeros or of a middling size, and none is less than 2^-15 of the one
/// before it.
QUOR_WIDE inline bool are_quotients(const double* values, size_t count) {
  constexpr uint64_t steepest = uint64_t{15} << 52;
  uint64_t outside = 0;
  for (size_t i = 0; i < count; ++i) {
    const uint64_t size = size_bits(values[i]);
    outside |= from_moderate(size) | (size + steepest - size_bits(values[i - 1]));
  }
  if (!is_below_zero(outside)) return true;
  outside = 0;
  for (size_t i = 0; i < count; ++i) {
    const uint64_t size = size_bits(values[i]);
    const uint64_t before = size_bits(values[i - 1]);
    outside |= size == 0 ? 0 - before : from_moderate(size) | (size + steepest - before);
  }
  return !is_below_zero(outside);
}

}  // namespace quor
