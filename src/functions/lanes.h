// Rows of a window word side by side: windows that end at neighbouring rows are reduced in one go,
// each in its own order, so that every result is that of one window after the other.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/processor.h"

#ifndef __clang__
// Lanes are handed over inside the library alone, whose compiler is one.
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace quor {

/// Numbers that the processor takes at once. Any has the smaller one.
using Pair [[gnu::vector_size(16)]] = double;
using Quad [[gnu::vector_size(32)]] = double;

/// A number for each of some neighbouring rows. Four parts keep the processor busy while each waits
/// for its own last sum.
template <typename Part>
struct Lanes {
  static constexpr size_t part_size = sizeof(Part) / sizeof(double);
  static constexpr size_t count = 4 * part_size;

  Part parts[4];
};

template <typename Part, typename Change>
Lanes<Part> each_part(const Change& change) {
  return {change(0), change(1), change(2), change(3)};
}

template <typename Part>
Lanes<Part> lanes_at(const double* values) {
  return each_part<Part>([values](size_t i) {
    Part part;
    std::memcpy(&part, values + i * Lanes<Part>::part_size, sizeof(Part));
    return part;
  });
}

template <typename Part>
void store(const Lanes<Part>& lanes, double* values) {
  // Part by part: a copy of all at once would have them stand in memory before.
  for (size_t i = 0; i < 4; ++i) {
    const Part part = lanes.parts[i];
    std::memcpy(values + i * Lanes<Part>::part_size, &part, sizeof part);
  }
}

template <typename Part>
Lanes<Part> operator+(const Lanes<Part>& a, const Lanes<Part>& b) {
  return each_part<Part>([&](size_t i) { return a.parts[i] + b.parts[i]; });
}
template <typename Part>
Lanes<Part> operator+(const Lanes<Part>& a, double b) {
  return each_part<Part>([&](size_t i) { return a.parts[i] + b; });
}
template <typename Part>
Lanes<Part> operator-(const Lanes<Part>& a, const Lanes<Part>& b) {
  return each_part<Part>([&](size_t i) { return a.parts[i] - b.parts[i]; });
}
template <typename Part>
Lanes<Part> operator*(const Lanes<Part>& a, const Lanes<Part>& b) {
  return each_part<Part>([&](size_t i) { return a.parts[i] * b.parts[i]; });
}
template <typename Part>
Lanes<Part> operator*(const Lanes<Part>& a, double b) {
  return each_part<Part>([&](size_t i) { return a.parts[i] * b; });
}
template <typename Part>
Lanes<Part> operator*(double a, const Lanes<Part>& b) {
  return b * a;
}
template <typename Part>
Lanes<Part> operator/(const Lanes<Part>& a, double b) {
  return each_part<Part>([&](size_t i) { return a.parts[i] / b; });
}
template <typename Part>
Lanes<Part>& operator+=(Lanes<Part>& a, const Lanes<Part>& b) {
  return a = a + b;
}

/// What `change` makes of each number.
template <typename Part, typename Change>
Lanes<Part> each_lane(const Lanes<Part>& lanes, const Change& change) {
  return each_part<Part>([&](size_t i) {
    const Part& part = lanes.parts[i];
    return [&]<size_t... place>(std::index_sequence<place...>) {
      return Part{change(part[place])...};
    }
    (std::make_index_sequence<Lanes<Part>::part_size>());
  });
}

inline double absolute(double value) { return std::fabs(value); }
template <typename Part>
Lanes<Part> absolute(const Lanes<Part>& lanes) {
  return each_lane(lanes, [](double value) { return std::fabs(value); });
}

inline double square_root(double value) { return std::sqrt(value); }
template <typename Part>
Lanes<Part> square_root(const Lanes<Part>& lanes) {
  return each_lane(lanes, [](double value) { return std::sqrt(value); });
}

/// a*b + c, rounded once.
#if defined(__x86_64__) && !defined(__clang__)
QUOR_WIDE inline Quad fused_sum(const Quad& a, const Quad& b, const Quad& c) {
  return __builtin_ia32_vfmaddpd256(a, b, c);
}
#endif
template <typename Part>
Part fused_sum(const Part& a, const Part& b, const Part& c) {
  return [&]<size_t... place>(std::index_sequence<place...>) {
    return Part{__builtin_fma(a[place], b[place], c[place])...};
  }
  (std::make_index_sequence<Lanes<Part>::part_size>());
}

/// A whole number to divide by, and its reciprocal in two doubles: the next one below it, and what
/// that leaves.
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

/// x / d with one multiplication and one fused step; x and the quotient are `is_moderate`.
///
/// The sum of both products misses x/d by less than 2^-51 of a unit of its last place before it is
/// rounded, once. That rounding is the one of x/d unless a midpoint of two doubles lies between. It
/// doesn't: x/d is never a midpoint, which has a bit more than any x that d divides, and differs
/// from one by a 2d-th of the unit at least. A zero keeps its sign, as neither part is below 0.
inline double fused_quotient(double x, const Divisor& d) {
  return __builtin_fma(x, d.reciprocal, x * d.rest);
}
template <typename Part>
Lanes<Part> fused_quotient(const Lanes<Part>& x, const Divisor& d) {
  const Part reciprocal = d.reciprocal - Part{};
  return each_part<Part>(
      [&](size_t i) { return fused_sum(x.parts[i], reciprocal, x.parts[i] * d.rest); });
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
