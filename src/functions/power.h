// Powers as the mathematics library computes them.
#pragma once

namespace quor {

/// pow(base, exponent). A compiler that knows the exponent may make a product of a square, which
/// rounds otherwise now and then; results follow the library, so the call stays one.
double power(double base, double exponent);

}  // namespace quor
