#include "functions/power.h"

#include <cmath>

namespace quor {

double power(double base, double exponent) { return std::pow(base, exponent); }

}  // namespace quor
