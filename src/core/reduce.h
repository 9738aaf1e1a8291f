// What the operators of the language make of two numbers.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>

#include "core/value.h"
#include "tables/operator_table.h"

namespace quor {

/// A truth as a number, in a form that loops over columns make of several rows at once; numbers
/// stay what they are.
template <typename T>
constexpr double truth(T value) {
  if constexpr (std::same_as<T, double>) {
    return value;
  } else {
    return value ? 1.0 : 0.0;
  }
}

/// One of two numbers without a branch: which way a market goes can't be foretold.
inline double either(bool first, double a, double b) {
  const uint64_t mask = uint64_t{0} - uint64_t{first};
  return std::bit_cast<double>((std::bit_cast<uint64_t>(a) & mask) |
                               (std::bit_cast<uint64_t>(b) & ~mask));
}
inline int32_t either(bool first, int32_t a, int32_t b) {
  const uint32_t mask = uint32_t{0} - uint32_t{first};
  return static_cast<int32_t>((static_cast<uint32_t>(a) & mask) |
                              (static_cast<uint32_t>(b) & ~mask));
}

/// Calls `use` with what an operator does, a function of the left and the right number that gives a
/// number or a truth. Nulls are tested nowhere: what they give falls out of NaN arithmetic and of
/// the comparisons, so that the logical operators take a null for true.
template <typename Use>
[[gnu::always_inline]] inline auto with_operator(OpCode op, const Use& use) {
  using D = double;
  switch (op) {
    case op_or:
      return use([](D l, D r) { return (l != 0.0) | (r != 0.0); });
    case op_and:
      return use([](D l, D r) { return (l != 0.0) & (r != 0.0); });
    case op_equal:
      return use([](D l, D r) { return nearly_equal(l, r); });
    case op_not_equal:
      return use([](D l, D r) { return !nearly_equal(l, r); });
    case op_less_equal:
      return use([](D l, D r) { return l <= r; });
    case op_less:
      return use([](D l, D r) { return !nearly_equal(l, r) & (l < r); });
    case op_greater_equal:
      return use([](D l, D r) { return l >= r; });
    case op_greater:
      return use([](D l, D r) { return !nearly_equal(l, r) & (l > r); });
    case op_minus:
    case op_unary_minus:
      return use([](D l, D r) { return l - r; });
    case op_plus:
      return use([](D l, D r) { return l + r; });
    case op_remainder:
      return use(
          [](D l, D r) { return nearly_equal(r, 0.0) ? 0.0 : remainder_of(to_int(l), to_int(r)); });
    case op_times:
      return use([](D l, D r) { return l * r; });
    case op_divide:
      // Divided in any case, so that a loop can divide several rows at once.
      return use([](D l, D r) {
        const double quotient = l / r;
        return nearly_equal(r, 0.0) ? 0.0 : quotient;
      });
    default:
      return use([](D, D) { return 0.0; });  // a "(" that was never closed
  }
}

}  // namespace quor
