// The null value, the tolerance of comparisons, and the guarded conversions of doubles to integers.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace quor {

/// What every missing cell and failed lookup gives: a quiet NaN with the sign bit set.
inline constexpr double null_value = std::bit_cast<double>(0xFFF8000000000000ULL);

/// Every NaN counts as null, whatever its bits.
constexpr bool is_null(double value) { return value != value; }

/// Whether they are the same to the last bit, as not all nulls and not all zeros are.
constexpr bool has_same_bits(double a, double b) {
  return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

/// Truncates toward zero to 32 bits; null, infinities and values out of range give -2147483648.
/// By way of 64 bits, for g++ 12 takes the straight way there and back to a double for a truncation
/// where the processor has one, which leaves the sign of -0.5 to the 0.
constexpr int32_t to_int(double value) {
  return value > -2147483649.0 && value < 2147483648.0
             ? static_cast<int32_t>(static_cast<int64_t>(value))
             : std::numeric_limits<int32_t>::min();
}

/// As `to_int` with 64 bits.
constexpr int64_t to_int64(double value) {
  return value >= -9223372036854775808.0 && value < 9223372036854775808.0
             ? static_cast<int64_t>(value)
             : std::numeric_limits<int64_t>::min();
}

/// The comparison of "=", "<>", "<" and ">": equal within 1e-10, never for a null.
inline bool nearly_equal(double a, double b) { return std::fabs(a - b) < 1e-10; }

/// 32-bit arithmetic that wraps around.
constexpr int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t wrapping_multiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// The remainder with the sign of the dividend; 0 for a divisor of 0, which the machine can't
/// serve.
constexpr int32_t remainder_of(int32_t dividend, int32_t divisor) {
  return divisor == 0 || divisor == -1 ? 0 : dividend % divisor;
}

}  // namespace quor
