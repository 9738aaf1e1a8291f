// What a vector can't say of the words of one bar: chance, refusals, and a run that breaks off.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "support/test_host.h"

namespace quor_test {
namespace {

/// One draw per bar.
Series draws(const std::string& bound, size_t bars) {
  TestHost host;
  EXPECT_EQ(host.compile("A:=RAND(" + bound + ");B:=C;").code, 0);
  host.feed({{"C", Series(bars, 1)}});
  EXPECT_EQ(host.run(), success);
  return host.line("A");
}

std::set<double> distinct(const Series& values) { return {values.begin(), values.end()}; }

TEST(Random, DrawsFromNothingToOneMoreThanItsArgument) {
  EXPECT_EQ(distinct(draws("1.9", 300)), (std::set<double>{0, 1, 2}));
  EXPECT_EQ(distinct(draws("-1", 50)), (std::set<double>{0}));
  // Each of four values in about a quarter of the draws; 6 standard deviations are 260.
  const Series many = draws("2", 10000);
  for (const double value : {0.0, 1.0, 2.0, 3.0}) {
    EXPECT_NEAR(static_cast<double>(std::ranges::count(many, value)), 2500.0, 260.0) << value;
  }
}

TEST(Random, BoundsWithoutUseEndWithSomeInteger) {
  for (const char* bound : {"NULL", "-2", "-3", "2147483646", "2147483647", "1E300"}) {
    for (const double value : draws(bound, 20)) EXPECT_EQ(value, std::trunc(value)) << bound;
  }
  EXPECT_GT(distinct(draws("2147483645", 20)).size(), 15U);
}

TEST(Arithmetic, NoWindowIsShorterThanNone) {
  TestHost host;
  host.compile("A:=C;\nB:=NUMPOW(C,-2,1);");
  host.feed({{"C", series("1 2")}});
  EXPECT_EQ(host.run(), R"({"ErrCode":4000,"ExtraMsg":"","ErrLine":"vector too long"})");
}

}  // namespace
}  // namespace quor_test
