// The mathematics that are linked in: their last bits, which no processor and no system changes,
// how far they may be off, and the signs of what faults give. The values are of 60 digits, rounded.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/math.h"

namespace quor_test {
namespace {

namespace platform = quor::platform;

using Function = double(double);

double power_of_1_06(double exponent) { return platform::pow(0x1.104b937aa2af3p+0, exponent); }
double cube(double base) { return platform::pow(base, 3.0); }

struct Value {
  Function* function;
  const char* name;
  double argument;
  double nearest;
};

/// Where C libraries of systems are off, other than for the logarithm.
const Value last_bits[] = {
    {platform::acos, "acos", 0x1.d5e074153f4a0p-1, 0x1.a246fbf940acfp-2},
    {platform::asin, "asin", -0x1.42e2626839120p-4, -0x1.43383b541a0a8p-4},
    {platform::atan, "atan", 0x1.9082268bbadc0p-3, 0x1.8b844ae7f62f6p-3},
    {platform::cos, "cos", 0x1.3adb27002a50cp+2, 0x1.a563d595e344dp-3},
    {platform::exp, "exp", -0x1.15ac77bfe1740p+1, 0x1.d3fca7709766ep-4},
    {platform::log, "log", 0x1.8000000000000p+1, 0x1.193ea7aad030bp+0},
    {platform::log10, "log10", 0x1.b53db208265e0p+0, 0x1.dc1ef3bb1e119p-3},
    {platform::sin, "sin", 0x1.d5b98ab490adep+19, 0x1.67fc3f1d2595fp-3},
    {platform::tan, "tan", -0x1.9403e3e104586p+18, -0x1.f6d6100fd6f57p+3},
    {power_of_1_06, "pow", 0x1.03ef835747288p+6, 0x1.b93a09cedac9cp+5},
    {cube, "pow", 0x1.160cccccccccdp+8, 0x1.4802e2af645a2p+24},
};

TEST(Mathematics, LastBitsAreTheSameEverywhere) {
  for (const auto& [function, name, argument, nearest] : last_bits) {
    EXPECT_EQ(function(argument), nearest) << name << " of " << argument;
  }
}

struct Bounds {
  Function* function;
  const char* name;
  double argument;
  double below;  ///< the true value lies between this one and the next one
};

/// The arguments of 20,000 with the largest errors.
const Bounds hardest[] = {
    {platform::acos, "acos", -0x1.0e00dbb6f0496p-1, 0x1.1029c9c81f35ap+1},
    {platform::asin, "asin", 0x1.01e7634517ee0p-1, 0x1.0e48a06e3e7fap-1},
    {platform::atan, "atan", -0x1.5427c9a4e186cp+1, -0x1.35fcbbedc082cp+0},
    {platform::cos, "cos", -0x1.2ea8a7dde0436p+1, -0x1.6d0a7bd0dabd4p-1},
    {platform::sin, "sin", -0x1.fbdc869e6ce00p+16, -0x1.82804881979b6p-1},
    {platform::tan, "tan", -0x1.dd972df723d70p-1, -0x1.5945c410b5756p+0},
    {platform::exp, "exp", 0x1.1d78c46904a00p+2, 0x1.5a1f26d53a331p+6},
    {platform::log, "log", 0x1.13a56141fb672p+0, 0x1.2edbc1a0f0b14p-4},
    {platform::log10, "log10", 0x1.55064a663a984p+0, 0x1.fe23a3f77ca2fp-4},
};

TEST(Mathematics, ErrorsStayBelowOneUnitOfTheLastPlace) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [function, name, argument, below] : hardest) {
    const double result = function(argument);
    EXPECT_TRUE(result == below || result == std::nextafter(below, infinity))
        << name << " of " << argument;
  }
}

TEST(Mathematics, FaultsGiveANanOfOneSignAndKeepThatOfTheirArgument) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const struct {
    Function* function;
    const char* name;
    double fault;
    bool negative;
  } rows[] = {
      {platform::acos, "acos", 2, false},     {platform::asin, "asin", -2, false},
      {platform::cos, "cos", infinity, true}, {platform::sin, "sin", -infinity, true},
      {platform::tan, "tan", infinity, true}, {platform::log, "log", -1, true},
      {platform::log10, "log10", -1, false},  {platform::exp, "exp", nan, false},
      {platform::atan, "atan", nan, false},
  };
  for (const auto& [function, name, fault, negative] : rows) {
    EXPECT_TRUE(std::isnan(function(fault))) << name;
    EXPECT_EQ(std::signbit(function(fault)), negative) << name;
    EXPECT_FALSE(std::signbit(function(nan))) << name;
    EXPECT_TRUE(std::signbit(function(-nan))) << name;
  }
  EXPECT_TRUE(std::signbit(platform::pow(-2.0, 0.5)));
  EXPECT_FALSE(std::signbit(platform::pow(nan, 2.0)));
  EXPECT_TRUE(std::signbit(platform::pow(2.0, -nan)));
  EXPECT_EQ(platform::pow(nan, 0.0), 1.0);
}

}  // namespace
}  // namespace quor_test
