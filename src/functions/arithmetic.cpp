// Arithmetic on the values of one bar, a weighted sum over some, and random numbers. A fault such
// as the root of a negative number gives NaN, which is null from there on.
#include <cmath>
#include <cstdint>
#include <optional>

#include "core/call.h"
#include "functions/one_bar.h"
#include "functions/series.h"
#include "platform/math.h"
#include "platform/random.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using ABS = OneArgument<[](double x) { return std::fabs(x); }>;
using ACOS = OneArgument<[](double x) { return platform::acos(x); }>;
using ASIN = OneArgument<[](double x) { return platform::asin(x); }>;
using ATAN = OneArgument<[](double x) { return platform::atan(x); }>;
using COS = OneArgument<[](double x) { return platform::cos(x); }>;
using SIN = OneArgument<[](double x) { return platform::sin(x); }>;
using TAN = OneArgument<[](double x) { return platform::tan(x); }>;
using EXP = OneArgument<[](double x) { return platform::exp(x); }>;
using LN = OneArgument<[](double x) { return platform::log(x); }>;
using LOG10 = OneArgument<[](double x) { return platform::log10(x); }>;
using SQRT = OneArgument<[](double x) { return std::sqrt(x); }>;
using CEILING = OneArgument<[](double x) { return std::ceil(x); }>;
using FLOOR = OneArgument<[](double x) { return std::floor(x); }>;
/// Bound to 32 bits: a null gives -2147483648.
using INTPART = OneArgument<[](double x) { return static_cast<double>(to_int(x)); }>;
using FRACPART = OneArgument<[](double x) { return x - std::trunc(x); }>;
using REVERSE = OneArgument<[](double x) { return -x; }>;
using SQUARE = OneArgument<[](double x) { return x * x; }>;
using CUBE = OneArgument<[](double x) { return platform::pow(x, 3.0); }>;

/// 0 and null leave the caller's start value.
std::optional<double> sign_of(double x) {
  if (x > 0) return 1.0;
  if (x < 0) return -1.0;
  return std::nullopt;
}
using SIGN = OneArgument<sign_of>;

using POW =
    TwoArguments<[](double base, double exponent) { return platform::pow(base, exponent); }>;

/// A divisor of exactly 0 writes nothing, one that truncates to 0 gives 0.
using MOD = TwoArguments<[](double dividend, double divisor) -> std::optional<double> {
  if (divisor == 0.0) return std::nullopt;
  return remainder_of(to_int(dividend), to_int(divisor));
}>;

/// Without a base the decimal logarithm, as a quotient. Unlike `LN` and `LOG10` it gives null for
/// 0. A base of 0 is let through.
class LOG final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1, 2);
    double x = null_value;
    Status status = call.evaluate(0, x);
    if (failed(status)) return status;
    call.result = null_value;
    if (!(x > 0)) return Status::ok;
    double base = 10.0;
    if (call.argument_count() > 1) {
      base = null_value;
      status = call.evaluate(1, base);
      if (failed(status)) return status;
    }
    return call.answer(logarithm(x, base));
  }
  const double* column(const ColumnCall& call) const override {
    const double* x = call.values(0);
    const double* base = call.argument_count() > 1 ? call.values(1) : call.everywhere(10.0);
    if (x == nullptr || base == nullptr) return nullptr;
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) result[i] = logarithm(x[i], base[i]);
    return result;
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .passes_over = true, .passed_over_from = 1};
  }

 private:
  static double logarithm(double x, double base) {
    if (!(x > 0) || base == 1.0 || !(base >= 0)) return null_value;
    return platform::log(x) / platform::log(base);
  }
};

/// Halves round away from zero.
class ROUND final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1, 2);
    double x = null_value;
    Status status = call.evaluate(0, x);
    if (failed(status)) return status;
    if (call.argument_count() < 2) {
      return call.answer(std::round(x));
    }
    double digits = null_value;
    status = call.evaluate(1, digits);
    if (failed(status)) return status;
    return call.answer(to_digits(x, digits));
  }
  const double* column(const ColumnCall& call) const override {
    const bool to_integers = call.argument_count() < 2;
    const double* x = call.values(0);
    const double* digits = to_integers ? x : call.values(1);
    if (x == nullptr || digits == nullptr) return nullptr;
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) {
      result[i] = to_integers ? std::round(x[i]) : to_digits(x[i], digits[i]);
    }
    return result;
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false}; }

 private:
  /// The digits are not truncated. Null digits give null.
  static double to_digits(double x, double digits) {
    if (digits >= 0) {
      const double scale = platform::pow(10.0, digits);
      return std::round(scale * x) / scale;
    }
    const double unit = platform::pow(10.0, -digits);
    return std::round(x / unit) * unit;
  }
};

/// 1^M * oldest + 2^M * next + ... + N^M * newest over N bars.
class NUMPOW final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 3) return call.wrong_count();
    double period = null_value;
    Status status = call.evaluate(1, period);
    if (failed(status)) return status;
    const int32_t count = to_int(period);
    if (call.scan) {
      call.script().raise_period(count);
      return Status::ok;
    }
    if (call.row < count) {
      return call.answer(null_value);
    }
    double exponent = null_value;
    status = call.evaluate(2, exponent);
    if (failed(status)) return status;
    double x = null_value;
    status = call.evaluate(0, x);
    if (failed(status)) return status;
    const int32_t column = store_in_own_column(call, call.argument(0), x);
    return call.answer(weighted_sum(call.table().window(column, call.row, count), exponent));
  }

 private:
  static double weighted_sum(const Window& window, double exponent) {
    double sum = 0.0;
    for (size_t i = 0; i < window.size(); ++i) {
      sum += platform::pow(static_cast<double>(i + 1), exponent) * window[i];
    }
    return sum;
  }
};

/// Uniform from 0 to `most`, both included. A negative bound counts as the unsigned number with its
/// bits.
int32_t random_up_to(int32_t most) {
  const uint32_t span = static_cast<uint32_t>(most) + 1;
  if (span == 0) return static_cast<int32_t>(random_word());
  // Words below 2^32 mod `span` would favour small remainders. At least half of all words pass.
  const uint32_t surplus = (0 - span) % span;
  uint32_t word = random_word();
  while (word < surplus) word = random_word();
  return static_cast<int32_t>(word % span);
}

/// Draws from 0 to N + 1, anew at every evaluation.
class RAND final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    double n = null_value;
    const Status status = call.evaluate(0, n);
    if (failed(status)) return status;
    return call.answer(random_up_to(wrapping_add(to_int(n), 1)));
  }
};

constexpr WordRow arithmetic_rows[] = {
    word_row<ABS>("ABS", 45, steady),
    word_row<ACOS>("ACOS", 32, steady),
    word_row<ASIN>("ASIN", 33, steady),
    word_row<ATAN>("ATAN", 34, steady),
    word_row<COS>("COS", 47, steady),
    word_row<SIN>("SIN", 61, steady),
    word_row<TAN>("TAN", 65, steady),
    word_row<EXP>("EXP", 50, steady),
    word_row<LN>("LN", 85, steady),
    word_row<LOG10>("LOG10", 84, steady),
    word_row<SQRT>("SQRT", 42, steady),
    word_row<CEILING>("CEILING", 12, steady),
    word_row<FLOOR>("FLOOR", 28, steady),
    word_row<INTPART>("INTPART", 15, steady),
    word_row<FRACPART>("FRACPART", 87, steady),
    word_row<REVERSE>("REVERSE", 17, steady),
    word_row<SQUARE>("SQUARE", 20, steady),
    word_row<CUBE>("CUBE", 86, steady),
    word_row<SIGN>("SIGN", 41, steady),
    word_row<POW>("POW", 60, steady),
    word_row<MOD>("MOD", 58, steady),
    word_row<LOG>("LOG", 55, steady),
    word_row<ROUND>("ROUND", 30, steady),
    word_row<NUMPOW>("NUMPOW", 100, steady | periods_from(1, can_fail)),
    word_row<RAND>("RAND", 40, looks_back | acts),
};

}  // namespace

std::span<const WordRow> arithmetic_words() { return arithmetic_rows; }

}  // namespace quor
