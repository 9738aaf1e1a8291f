// Windows of neighbouring rows side by side, against one window after the other.
#include "functions/lanes.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "support/plain_bars.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

uint64_t bits(double value) { return std::bit_cast<uint64_t>(value); }

TEST(Lanes, AFusedQuotientIsThatOfADivision) {
  std::mt19937_64 random(28);
  const auto draw = [&random](double divisor) {
    const double value = std::ldexp(static_cast<double>(random() >> 11), int(random() % 600) - 300);
    // Multiples, and what lies beside them, come closest to the middle of two doubles.
    switch (random() % 3) {
      case 0:
        return value;
      case 1:
        return value * divisor;
      default:
        return std::nextafter(value * divisor, HUGE_VAL);
    }
  };
  for (size_t n = 1; n < 600; ++n) {
    for (const double divisor : {static_cast<double>(n), static_cast<double>(n * (n + 1))}) {
      for (int round = 0; round < 40; ++round) {
        double values[quor::Lanes<quor::Pair>::count];
        for (double& value : values) value = draw(divisor);
        double quotients[std::size(values)];
        quor::store(
            quor::fused_quotient(quor::lanes_at<quor::Pair>(values), {divisor, 1.0 / divisor}),
            quotients);
        for (size_t i = 0; i < std::size(values); ++i) {
          ASSERT_EQ(bits(quotients[i]), bits(values[i] / divisor)) << values[i] << '/' << divisor;
        }
      }
    }
  }
}

TEST(Lanes, NumbersOfASizeThatLosesBitsAreNotModerate) {
  if (!quor::is_wide()) GTEST_SKIP() << "is asked where a processor can fuse";
  for (const double value : {0.0, -0.0, 1e-90, -1e90, 12.5}) {
    EXPECT_TRUE(quor::are_moderate(&value, 1)) << value;
  }
  for (const double value : {1e-91, 1e91, -HUGE_VAL, 5e-324, std::nan("")}) {
    EXPECT_FALSE(quor::are_moderate(&value, 1)) << value;
  }
}

/// 1400 rows whose middle, from row 650 to 800, is of another kind.
Series series_with(const std::function<double(double)>& middle) {
  std::mt19937 random(7);
  Series series;
  for (size_t row = 0; row < 1400; ++row) {
    const double value = static_cast<double>(random() % 2000) / 16.0 - 20.0;
    series.push_back(row < 650 || row >= 800 ? value : middle(value));
  }
  return series;
}

Series run(const std::string& script, const Series& closes, bool in_blocks) {
  TestHost host;
  EXPECT_EQ(host.compile(script).code, 0) << script;
  if (!in_blocks) go_by_plain_bars(host.handle());
  host.feed({{"C", closes}}, 0, closes.size());
  EXPECT_EQ(host.run(), success);
  return host.line("A");
}

std::vector<std::string> scripts_with_lanes() {
  std::vector<std::string> scripts = {
      "A:CROSS(MA(C,3),MA(C,9));",
      "A:CROSSDOWN(EMA(C,3),EMA(C,9));",
      "A:MAX(MA(C,4),MA(C,9))/IF(C>3,EMA(C,3),EMA(C,8));",
      "A:100/C+C/7*(C>3)-(C<=0);",
      "A:(C-LLV(C,9))/(HHV(C,9)-LLV(C,9))+STDP(C,7)*STDP(C,7)-REF(STDP(C,7),2);",
      "A:MOD(C,3)+(C=0||C<>5&&C>=2);",
  };
  for (const char* const word :
       {"STD", "STDP", "VAR", "VARP", "AVEDEV", "SUM", "WMA", "SLOPE", "HHV", "LLV"}) {
    for (const char* const n : {"1", "2", "3", "20", "64", "512", "513"}) {
      scripts.push_back(std::string("A:") + word + "(C," + n + ");");
    }
  }
  return scripts;
}

TEST(Lanes, NumbersOfAllSizesGiveTheBitsOfTheBars) {
  const struct {
    const char* name;
    std::function<double(double)> middle;
  } kinds[] = {
      {"ordinary", [](double value) { return value; }},
      {"nulls", [](double value) { return value < -15.0 ? null : value; }},
      {"zeros of both signs", [](double value) { return std::copysign(0.0, value); }},
      {"small", [](double value) { return value * 1e-160; }},
      {"smallest", [](double value) { return value * 5e-324; }},
      {"large", [](double value) { return value * 1e160; }},
      {"largest", [](double value) { return value * 1e307; }},
  };
  for (const auto& [name, middle] : kinds) {
    const Series closes = series_with(middle);
    for (const std::string& script : scripts_with_lanes()) {
      const Series blocks = run(script, closes, true);
      const Series bars = run(script, closes, false);
      ASSERT_EQ(blocks.size(), bars.size());
      for (size_t row = 0; row < bars.size(); ++row) {
        ASSERT_EQ(bits(blocks[row]), bits(bars[row])) << script << ' ' << name << ", row " << row;
      }
    }
  }
}

}  // namespace
}  // namespace quor_test
