// What a vector can't say of the words of one bar: chance, refusals, and a run that breaks off.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
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

TEST(Arithmetic, DivisionByANumberIsThatOfTheProcessor) {
  Series closes = {1.0 / 3.0, 5e-324, 3e-323, 2.3e-308, 1.7e307, -1e15, 0.0, -7.0, 1e-310, null};
  // Enough for blocks behind the bars.
  for (size_t row = 0; row < 200; ++row) closes.push_back(closes[row % 10] * 1.25);
  const struct {
    const char* written;
    double divisor;
  } divisors[] = {{"4", 4},       {"0.5", 0.5},     {"(-8)", -8},           {"1", 1},
                  {"3", 3},       {"1024", 1024},   {"(-0.0625)", -0.0625}, {"0.1", 0.1},
                  {"16.5", 16.5}, {"1E300", 1e300}, {"0.000000001", 1e-9}};
  for (const auto& [written, divisor] : divisors) {
    TestHost host;
    ASSERT_EQ(host.compile(std::string("A:C/") + written + ";").code, 0) << written;
    host.feed({{"C", closes}});
    EXPECT_EQ(host.run(), success);
    const Series quotients = host.line("A");
    for (size_t row = 0; row < closes.size(); ++row) {
      EXPECT_EQ(std::bit_cast<uint64_t>(quotients[row]),
                std::bit_cast<uint64_t>(closes[row] / divisor))
          << closes[row] << '/' << written;
    }
  }
}

TEST(Arithmetic, NumbersNearNothingDivideToNothing) {
  // A power of two on each side of the border, 2^-34 and 2^-33, and a larger number.
  TestHost host;
  ASSERT_EQ(host.compile("A:C/0.000000000058207660913467407;B:C/0.000000000116415321826934814;"
                         "D:C/0;E:C/(-0.000000000058207660913467407);")
                .code,
            0);
  host.feed({{"C", series("3 -5")}});
  EXPECT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("A"), series("0 0")));
  EXPECT_TRUE(same(host.line("B"), {3 * 0x1p33, -5 * 0x1p33}));
  EXPECT_TRUE(same(host.line("D"), series("0 0")));
  EXPECT_TRUE(same(host.line("E"), series("0 0")));
}

TEST(Arithmetic, NoWindowIsShorterThanNone) {
  TestHost host;
  host.compile("A:=C;\nB:=NUMPOW(C,-2,1);");
  host.feed({{"C", series("1 2")}});
  EXPECT_EQ(host.run(), R"({"ErrCode":4000,"ExtraMsg":"","ErrLine":"vector too long"})");
}

}  // namespace
}  // namespace quor_test
