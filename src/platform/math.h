// Functions of the C library whose last bits are the system's own.
#pragma once

#include <cmath>

namespace quor::platform {

#ifdef _WIN32
double acos(double x);
double asin(double x);
double atan(double x);
double cos(double x);
double exp(double x);
double log(double x);
double log10(double x);
double pow(double base, double exponent);
double sin(double x);
double tan(double x);
#else
using std::acos;
using std::asin;
using std::atan;
using std::cos;
using std::exp;
using std::log;
using std::log10;
using std::pow;
using std::sin;
using std::tan;
#endif

}  // namespace quor::platform
