// What the host is asked about a market, and which bars the chip distribution takes.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

/// What the market desk was asked, and what it answers; a key without an answer gives null.
struct Desk {
  std::vector<std::string> asked;
  std::map<std::string, double> answers;
};
Desk& desk() {
  static Desk the_desk;
  return the_desk;
}

double ask_desk(const char* key, const char* market, const char* security) {
  desk().asked.push_back(std::string(key) + " " + market + " " + security);
  const auto found = desk().answers.find(key);
  return found == desk().answers.end() ? null : found->second;
}

class MarketConstants : public testing::Test {
 protected:
  MarketConstants() {
    desk() = {};
    set_get_extra_data_callback(host.handle(), ask_desk);
    host.set_info(0x4000, "600000", "USHA");
  }

  void compile_and_feed(std::string_view script, const char* bars) {
    const Report report = host.compile(script);
    ASSERT_EQ(report.code, 0) << report.text;
    EXPECT_EQ(report.needs_extra_data, "true");
    EXPECT_TRUE(desk().asked.empty()) << "the trial run asked";
    host.feed({{"C", series(bars)}});
  }

  TestHost host;
};

TEST_F(MarketConstants, AreAskedOnceInOrder) {
  desk().answers = {{"MINPRICE", 0.01}, {"UNIT", 100}};
  compile_and_feed("A:=UNIT*2;B:=MINPRICE;D:=SHARECOUNTPERUNIT;", "1 2");
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "200 200");
  EXPECT_EQ(to_text(host.line("B")), "0.01 0.01");
  // Only the smallest price decides whether the host is ready.
  EXPECT_EQ(to_text(host.line("D")), "null null");
  const std::vector<std::string> once = {"MINPRICE USHA 600000", "UNIT USHA 600000",
                                         "SHARECOUNTPERUNIT USHA 600000"};
  EXPECT_EQ(desk().asked, once);

  // They outlive a compile, and the same security or none asks for nothing.
  host.set_info(0x3005, "600000", "USHA");
  host.set_info(0x4000, "", "USHA");
  host.compile("A:=UNIT;");
  host.feed({{"C", series("1")}});
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "100");
  EXPECT_EQ(desk().asked, once);
}

TEST_F(MarketConstants, AreAskedAgainWhileTheHostIsNotReady) {
  desk().answers = {{"UNIT", 100}};
  compile_and_feed("A:=UNIT;", "1 2 3");
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "100 100 100");
  EXPECT_EQ(desk().asked.size(), 9U);

  desk() = {{}, {{"MINPRICE", 0.01}, {"UNIT", 200}}};
  ASSERT_EQ(host.run(1), success);
  EXPECT_EQ(to_text(host.line("A")), "100 200 200");
  EXPECT_EQ(desk().asked.size(), 3U);
}

TEST_F(MarketConstants, AreAskedAnewForAnotherSecurity) {
  desk().answers = {{"MINPRICE", 0.01}};
  compile_and_feed("A:=MINPRICE;", "1");
  host.run();
  desk() = {{}, {{"MINPRICE", 0.5}}};
  host.set_info(0x4000, "IF2401", "CFFEX");
  host.run();
  EXPECT_EQ(to_text(host.line("A")), "0.5");
  ASSERT_EQ(desk().asked.size(), 3U);
  EXPECT_EQ(desk().asked[0], "MINPRICE CFFEX IF2401");
}

TEST_F(MarketConstants, AreNullWithoutAnyoneToAsk) {
  desk().answers = {{"MINPRICE", 0.01}};
  compile_and_feed("A:=MINPRICE;", "1 2");
  set_get_extra_data_callback(host.handle(), nullptr);
  host.run();
  EXPECT_EQ(to_text(host.line("A")), "null null");
  // Whoever comes later is asked still.
  set_get_extra_data_callback(host.handle(), ask_desk);
  host.run();
  EXPECT_EQ(to_text(host.line("A")), "0.01 0.01");
}

/// The share of chips at or below 15 for bars of one chip each. All trade at 10 but the oldest,
/// which trades at 20.
Series share_at_ten(const char* market, size_t rows, size_t row_without_volume) {
  Bars bars = {{"L", Series(rows, 10)}, {"H", Series(rows, 11)}, {"VOL", Series(rows, 1)}};
  bars["L"][0] = 20;
  bars["H"][0] = 21;
  if (row_without_volume < rows) bars["VOL"][row_without_volume] = null;
  TestHost host;
  host.set_info(0x4000, "000001", market);
  host.compile("A:=WINNER(15);");
  host.feed(bars);
  EXPECT_EQ(host.run(), success);
  return host.line("A");
}

TEST(ChipDistribution, TakesSoManyBars) {
  // The two prices lie differently on the grid of hundredths, so a chip there is one but for 1e-4.
  const Series whole_prices = share_at_ten("USHI", 103, SIZE_MAX);
  EXPECT_NEAR(whole_prices[100], 100.0 / 101, 1e-3);
  EXPECT_NEAR(whole_prices[101], 1.0, 1e-3);

  const Series hundredths = share_at_ten("USHA", 123, SIZE_MAX);
  EXPECT_NEAR(hundredths[120], 120.0 / 121, 1e-3);
  EXPECT_NEAR(hundredths[121], 1.0, 1e-3);

  // A bar without a volume ends the walk once it lies more than 100 bars back.
  const Series gap = share_at_ten("USHA", 123, 5);
  EXPECT_NEAR(gap[105], 104.0 / 105, 1e-3);
  EXPECT_NEAR(gap[106], 1.0, 1e-3);
}

TEST(ChipDistribution, PricesWithoutMeasureStayBounded) {
  TestHost host;
  host.set_info(0x4000, "600000", "USHA");
  host.compile("A:=COST(50);B:=WINNER(C);D:=REF(COST(C),C)+REF(WINNER(1E300),-C);");
  const Series huge = {1e18, 9e16, 1e-300, 1e300, -1, 0.004, 9.2e16, 50};
  host.feed({{"H", huge},
             {"L", series("1 0.01 1e-301 2 -2 0.001 1 49")},
             {"VOL", series("1e300 1e-300 1 1 1 1 1e308 5")},
             {"AMOUNT", series("1e308 1 1e-308 0 -1 1 1e308 1e300")},
             {"C", huge}});
  // Infinities come in through single cells only.
  const double infinity = std::numeric_limits<double>::infinity();
  set_column_data(host.handle(), static_cast<uint64_t>(host.key_of(2)), 8, infinity);
  set_column_data(host.handle(), static_cast<uint64_t>(host.key_of(7)), 13, infinity);
  EXPECT_EQ(host.run(), success);
  // A high beyond 64 bits of hundredths makes no grid; the bars before it were fine.
  EXPECT_EQ(host.line("A")[0], 0.0);
  EXPECT_EQ(host.line("A")[3], 0.0);
}

}  // namespace
}  // namespace quor_test
