// Division by whole numbers without dividing, bit by bit the same.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/processor.h"

namespace quor {

/// The reciprocal of a whole number in two doubles: the next one that isn't above it, and what that
/// leaves.
struct Divisor {
  double reciprocal;
  double rest;
};

/// Of a number from 1 to 2^31.
constexpr Divisor divisor_of(uint64_t number) {
  constexpr int digits = 53;  // of a double
  constexpr int at_once = 62;
  const int width = 64 - std::countl_zero(number);
  // 2^shift / number has as many digits as a double.
  const int shift = digits - 1 + width;
  const int first = std::min(shift, at_once);
  const uint64_t power = uint64_t{1} << first;
  const uint64_t left = power % number << (shift - first);
  const uint64_t quotient = (power / number << (shift - first)) + left / number;
  const double unit = 1.0 / (static_cast<double>(uint64_t{1} << (digits - 1)) *
                             static_cast<double>(uint64_t{1} << width));
  return {static_cast<double>(quotient) * unit,
          static_cast<double>(left % number) / static_cast<double>(number) * unit};
}

/// x / d with one multiplication and one fused step, where x is moderate (`are_moderate`). It is
/// enough to look at the quotients: what another x gives isn't moderate either, or it is the same
/// zero.
///
/// The sum of both products misses x/d by less than 2^-51 of a unit of its last place before it is
/// rounded, once. That rounding is the one of x/d unless a midpoint of two doubles lies between. It
/// doesn't: x/d is never a midpoint, which has a bit more than any x that d divides, and differs
/// from one by a 2d-th of the unit at least. A zero keeps its sign, as neither part is below 0.
inline double fused_quotient(double x, const Divisor& d) {
  return __builtin_fma(x, d.reciprocal, x * d.rest);
}

/// Without their sign doubles are in the order of their bits.
inline uint64_t size_bits(double value) { return std::bit_cast<uint64_t>(value) & INT64_MAX; }

/// Differences of sizes say by their highest bit that they are below 0.
inline bool is_below_zero(uint64_t difference) { return difference >> 63 != 0; }

/// Below 0 for a size that is too small, as is 0, or too large for a moderate one.
inline uint64_t from_moderate(uint64_t size) {
  constexpr auto least = std::bit_cast<uint64_t>(0x1p-300);
  constexpr auto most = std::bit_cast<uint64_t>(0x1p300);
  return (size - least) | (most - size);
}

/// Whether sums of the values, their differences and the squares of these stay where no bit is lost
/// at either end of the doubles: all are zeros or of a middling size. A null isn't.
QUOR_WIDE inline bool are_moderate(const double* values, size_t count) {
  uint64_t outside = 0;
  for (size_t i = 0; i < count; ++i) outside |= from_moderate(size_bits(values[i]));
  if (!is_below_zero(outside)) return true;
  outside = 0;
  for (size_t i = 0; i < count; ++i) {
    const uint64_t size = size_bits(values[i]);
    outside |= size == 0 ? 0 : from_moderate(size);
  }
  return !is_below_zero(outside);
}

/// How many results of fused quotients are looked at at once: few enough to be near still.
constexpr size_t fused_strip = 256;

}  // namespace quor
