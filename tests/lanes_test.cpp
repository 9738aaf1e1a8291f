// Windows of neighbouring rows side by side, against one window after the other.
#include "functions/lanes.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "functions/fused_quotient.h"
#include "functions/weighted_step.h"
#include "support/plain_bars.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

uint64_t bits(double value) { return std::bit_cast<uint64_t>(value); }

std::vector<uint64_t> whole_divisors() {
  std::vector<uint64_t> divisors = {uint64_t{1} << 31, (uint64_t{1} << 31) - 1, 1'431'655'765};
  for (uint64_t n = 1; n < 600; ++n) divisors.insert(divisors.end(), {n, n * (n + 1)});
  return divisors;
}

TEST(Lanes, AFusedQuotientIsThatOfADivision) {
  std::mt19937_64 random(28);
  const auto draw = [&random](double divisor) {
    const int exponent = int(random() % 600) - 300;
    const double value = std::ldexp(static_cast<double>(random() >> 11), exponent);
    // Multiples, and those of the middles of two doubles, come closest to another rounding.
    const double multiple = std::fma(
        value, divisor, std::ldexp(static_cast<double>(random() % 2) / 2, exponent) * divisor);
    const double numbers[] = {value, multiple, std::nextafter(multiple, HUGE_VAL),
                              std::nextafter(multiple, 0.0), 0.0};
    return std::copysign(numbers[random() % std::size(numbers)], random() % 2 == 0 ? 1.0 : -1.0);
  };
  for (const uint64_t whole : whole_divisors()) {
    const auto divisor = static_cast<double>(whole);
    for (int round = 0; round < 40; ++round) {
      double values[quor::Lanes<quor::Pair>::count];
      for (double& value : values) value = draw(divisor);
      double quotients[std::size(values)];
      quor::store(quor::fused_quotient(quor::lanes_at<quor::Pair>(values), quor::divisor_of(whole)),
                  quotients);
      for (size_t i = 0; i < std::size(values); ++i) {
        ASSERT_EQ(bits(quotients[i]), bits(values[i] / divisor)) << values[i] << '/' << divisor;
      }
    }
  }
}

/// Values of which each comes close to taking back the one before it are the hardest.
TEST(Lanes, AWeightedStepThatIsAcceptedIsThatOfADivision) {
  if (!quor::is_wide()) GTEST_SKIP() << "is asked where a processor can fuse";
  std::mt19937_64 random(29);
  int accepted = 0;
  for (int round = 0; round < 400'000; ++round) {
    const auto d = static_cast<int64_t>((random() >> 33) >> random() % 31) + 1;
    const auto a =
        static_cast<int64_t>((random() >> 33) >> random() % 31) - (round % 3 == 0 ? d : 0);
    const int64_t b = d - a;
    if (b == 0) continue;
    const double prev = std::ldexp(static_cast<double>(random() >> 11), -40);
    const double left = std::ldexp(prev, -static_cast<int>(random() % 40)) * static_cast<double>(d);
    const double x = (left - static_cast<double>(a) * prev) / static_cast<double>(b);
    const double divided =
        (static_cast<double>(a) * prev + static_cast<double>(b) * x) / static_cast<double>(d);
    const double fused = quor::WeightedStep(a, b, d).next(x, prev);
    const double values[] = {prev, fused};
    if (!quor::are_quotients(values + 1, 1)) continue;
    ++accepted;
    ASSERT_EQ(bits(fused), bits(divided))
        << a << '*' << prev << '+' << b << '*' << x << " by " << d;
  }
  EXPECT_GT(accepted, 100'000);
}

TEST(Lanes, ValuesThatDivisionsMayNotHaveMadeAreNoQuotients) {
  if (!quor::is_wide()) GTEST_SKIP() << "is asked where a processor can fuse";
  const struct {
    double before;
    double value;
    bool are;
  } pairs[] = {{1.0, 1.0, true},        {1.0, -0x1p-15, true}, {1.0, 0x1p-16, false},
               {0.0, -2.0, true},       {0.0, 0.0, true},      {-0.0, -0.0, true},
               {1.0, 0.0, false},       {1e-95, 0.0, false},   {1e-95, 1e-91, false},
               {1e89, 1.0001e90, true}, {1e89, 1e91, false},   {1.0, std::nan(""), false},
               {1.0, HUGE_VAL, false}};
  for (const auto& [before, value, are] : pairs) {
    const double values[] = {before, value};
    EXPECT_EQ(quor::are_quotients(values + 1, 1), are) << before << " before " << value;
    // Among others, of which one is a zero.
    const double more[] = {0.0, 0.0, 0.0, before, value, value};
    EXPECT_EQ(quor::are_quotients(more + 1, 5), are) << before << " before " << value;
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

/// Values of which, once the average of 4 has forgotten those before, every second one takes all of
/// it back but for its last bits.
std::function<double(double)> taking_back() {
  return [row = 0, average = 0.0](double value) mutable {
    if (++row > 100 && row % 2 == 0) value = (average * 0x1p-49 - 3.0 * average) / 2.0;
    average = (3.0 * average + 2.0 * value) / 5.0;
    return value;
  };
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
      "B:EMA(C,2);E:EMA(C,7);D:B-E;A:EMA(D,3);",
      "B:SMA(C,3,1);A:SMA(B,3,1);",
      "A:SMA(MAX(C-5,0),14,1)/SMA(ABS(C-5),14,1);",
      "A:SMA(C,2,-2147483647)+SMA(C,5,9)+SMA(C,4,4);",
      "A:EMA(C,1)-EMA(C,2147483647);",
      "A:EMA(C,4);",
      "B:MA(C,5);D:MA(C,10);E:MA(C,20);F:MA(C,60);A:B-D+E-F;",
      "A:IF(C>3,C,IF(C<0,0-C,0))+IFF(C>9,1,C<2,C)+BETWEEN(C,2,7)+ABS(C-3);",
  };
  for (const char* const n : {"1", "3", "5", "7", "30", "60", "90", "250"}) {
    scripts.push_back(std::string("A:MA(C,") + n + ");");
  }
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
      {"zeros", [](double) { return 0.0; }},
      {"of both signs", [flip = 1.0](double value) mutable { return value * (flip = -flip); }},
      {"that take back", taking_back()},
      {"of all sizes", [turn = 0](double value) mutable { return std::ldexp(value, turn++ % 60); }},
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
