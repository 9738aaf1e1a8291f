// The functions of mathematics that systems compute to different last bits. These come from one
// library that is linked in everywhere, so that a script gives the same values on every system.
// What other functions give, such as roots and whole numbers, is laid down to the last bit.
#pragma once

#include <cmath>
#include <limits>

extern "C" {

double quor_acos(double x);
double quor_asin(double x);
double quor_atan(double x);
double quor_cos(double x);
double quor_exp(double x);
double quor_log(double x);
double quor_log10(double x);
double quor_pow(double base, double exponent);
double quor_sin(double x);
double quor_tan(double x);

}  // extern "C"

namespace quor::platform {

// The NaN that a fault gives has a sign, which shows in texts; processors make it of either.
constexpr double positive_fault = std::numeric_limits<double>::quiet_NaN();
constexpr double negative_fault = -positive_fault;

/// The result, or `fault` if it is a NaN that the function made of a number.
inline double settled(double result, double argument, double fault) {
  return std::isnan(result) && !std::isnan(argument) ? fault : result;
}

inline double acos(double x) { return settled(quor_acos(x), x, positive_fault); }
inline double asin(double x) { return settled(quor_asin(x), x, positive_fault); }
inline double atan(double x) { return quor_atan(x); }
inline double cos(double x) { return settled(quor_cos(x), x, negative_fault); }
inline double exp(double x) { return quor_exp(x); }
inline double log(double x) { return settled(quor_log(x), x, negative_fault); }
inline double log10(double x) { return settled(quor_log10(x), x, positive_fault); }
inline double sin(double x) { return settled(quor_sin(x), x, negative_fault); }
inline double tan(double x) { return settled(quor_tan(x), x, negative_fault); }

inline double pow(double base, double exponent) {
  return settled(quor_pow(base, exponent), base + exponent, negative_fault);
}

}  // namespace quor::platform
