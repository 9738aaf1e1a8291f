#include "functions/power.h"

#include "platform/math.h"

namespace quor {

double power(double base, double exponent) { return platform::pow(base, exponent); }

}  // namespace quor
