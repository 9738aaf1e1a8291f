// Rows of a window word side by side: windows that end at neighbouring rows are reduced in one go,
// each in its own order, so that every result is that of one window after the other.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "functions/fused_quotient.h"
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

/// `fused_quotient` of each number.
template <typename Part>
Lanes<Part> fused_quotient(const Lanes<Part>& x, const Divisor& d) {
  const Part reciprocal = d.reciprocal - Part{};
  return each_part<Part>(
      [&](size_t i) { return fused_sum(x.parts[i], reciprocal, x.parts[i] * d.rest); });
}

}  // namespace quor
