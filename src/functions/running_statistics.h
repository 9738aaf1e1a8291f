// The moments of a sample, gathered in one pass by the method of Welford. Its rounding is the
// result: a second pass over the distances would give other last bits.
#pragma once

#include <cstdint>
#include <limits>

#include "core/value.h"

namespace quor {

struct RunningStatistics {
  uint64_t count = 0;
  double minimum = std::numeric_limits<double>::infinity();   ///< null from the first null on
  double maximum = -std::numeric_limits<double>::infinity();  ///< null from the first null on
  double m1 = 0.0;                                            ///< the mean
  double m2 = 0.0;  ///< sums of the second, third and fourth powers of the distances from the mean
  double m3 = 0.0;
  double m4 = 0.0;

  void take(double x) {
    take_extremes(x);
    const auto c = static_cast<double>(count);
    const double delta = x - m1;
    const double dn = delta / (c + 1.0);
    const double t = delta * dn * c;
    m1 += dn;
    m4 += t * dn * dn * ((c - 2.0) * (c + 1.0) + 3.0) + 6.0 * dn * dn * m2 - 4.0 * dn * m3;
    m3 += t * dn * (c - 1.0) - 3.0 * dn * m2;
    m2 += t;
    ++count;
  }

 private:
  void take_extremes(double x) {
    if (is_null(x)) {
      minimum = null_value;
      maximum = null_value;
      return;
    }
    if (x < minimum) minimum = x;
    if (x > maximum) maximum = x;
  }
};

}  // namespace quor
