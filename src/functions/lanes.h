// Rows of a window word side by side: windows that end at neighbouring rows are reduced in one go,
// each in its own order, so that every result is that of one window after the other.
#pragma once

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

/// Whole divisors and their reciprocals.
struct Divisor {
  double value;
  double reciprocal;
};

/// x / d, by a multiplication and one correction; x and d are `is_moderate`, d is whole.
///
/// With r the reciprocal of d as a double, q = x * r is less than two units of its last place from
/// x/d, so that x - q*d is exact, and q + (x - q*d) * r misses x/d by less than 2^-51 of such a
/// unit before it is rounded, once. That rounding is the one of x/d unless a midpoint of two
/// doubles lies between. It doesn't: x/d is never a midpoint, which has a bit more than any x that
/// d divides, and differs from one by a 2d-th of the unit at least.
template <typename Part>
Lanes<Part> fused_quotient(const Lanes<Part>& x, Divisor d) {
  return each_lane(x, [d](double value) {
    const double quotient = value * d.reciprocal;
    const double rest = __builtin_fma(-quotient, d.value, value);
    return __builtin_fma(rest, d.reciprocal, quotient);
  });
}

/// Whether sums of the values, their differences and the squares of these stay where no bit is lost
/// at either end of the doubles: all are zeros or of a middling size. A null isn't.
QUOR_WIDE inline bool are_moderate(const double* values, size_t count) {
  constexpr auto least = std::bit_cast<int64_t>(0x1p-300);
  constexpr auto most = std::bit_cast<int64_t>(0x1p300);
  int64_t others = 0;
  for (size_t i = 0; i < count; ++i) {
    // Without their sign doubles are in the order of their bits.
    const int64_t size = std::bit_cast<int64_t>(values[i]) & INT64_MAX;
    others |=
        static_cast<int64_t>(size != 0) & static_cast<int64_t>((size < least) | (size > most));
  }
  return others == 0;
}

}  // namespace quor
