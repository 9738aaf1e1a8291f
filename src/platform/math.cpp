// The functions that the compiler's own library for Windows computes on the x87 unit depend on the
// precision that the host has set for its thread, and lose many bits where it is the usual one of
// Windows. These go to the system's instead. A fault gives the NaN that it gives on Linux, whose
// sign shows in texts.
#ifdef _WIN32
#include "platform/math.h"

#include <limits>

// The import library names some of the system's functions by their pointers only.
#define QUOR_SYSTEM_FUNCTION(name) __asm__("__imp_" #name)

extern "C" {

extern double (*const system_acos)(double) QUOR_SYSTEM_FUNCTION(acos);
extern double (*const system_asin)(double) QUOR_SYSTEM_FUNCTION(asin);
extern double (*const system_atan)(double) QUOR_SYSTEM_FUNCTION(atan);
extern double (*const system_cos)(double) QUOR_SYSTEM_FUNCTION(cos);
extern double (*const system_exp)(double) QUOR_SYSTEM_FUNCTION(exp);
extern double (*const system_log)(double) QUOR_SYSTEM_FUNCTION(log);
extern double (*const system_log10)(double) QUOR_SYSTEM_FUNCTION(log10);
extern double (*const system_pow)(double, double) QUOR_SYSTEM_FUNCTION(pow);
extern double (*const system_sin)(double) QUOR_SYSTEM_FUNCTION(sin);
extern double (*const system_tan)(double) QUOR_SYSTEM_FUNCTION(tan);

}  // extern "C"

namespace quor::platform {
namespace {

constexpr double positive_fault = std::numeric_limits<double>::quiet_NaN();
constexpr double negative_fault = -positive_fault;

/// The result, or `fault` if it is a NaN that the function made of a number.
double settled(double result, double argument, double fault) {
  if (std::isnan(argument)) return result;
  return std::isnan(result) ? fault : result;
}

}  // namespace

double acos(double x) { return settled(system_acos(x), x, positive_fault); }
double asin(double x) { return settled(system_asin(x), x, positive_fault); }
double atan(double x) { return system_atan(x); }
double cos(double x) { return settled(system_cos(x), x, negative_fault); }
double exp(double x) { return system_exp(x); }
double log(double x) { return settled(system_log(x), x, negative_fault); }
double log10(double x) { return settled(system_log10(x), x, positive_fault); }
double sin(double x) { return settled(system_sin(x), x, negative_fault); }
double tan(double x) { return settled(system_tan(x), x, negative_fault); }

double pow(double base, double exponent) {
  return settled(system_pow(base, exponent), base + exponent, negative_fault);
}

}  // namespace quor::platform
#endif
