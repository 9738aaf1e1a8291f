// A trading day as a client lives it: bars come one by one, each several times while it forms, with
// notices and signals on.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

/// Five-minute bars of one morning.
std::vector<int64_t> morning_keys(size_t bars) {
  std::vector<int64_t> keys;
  for (size_t i = 0; i < bars; ++i) {
    const size_t minute = 9 * 60 + 30 + 5 * (i + 1);
    keys.push_back(20240105000000 + static_cast<int64_t>((minute / 60 * 100 + minute % 60) * 100));
  }
  return keys;
}

Bars morning(size_t bars) {
  Bars day;
  for (size_t i = 0; i < bars; ++i) {
    const double open = 100 + 3 * std::sin(static_cast<double>(i) / 2);
    const double close = 100 + 3 * std::sin(static_cast<double>(i + 1) / 2);
    day["O"].push_back(open);
    day["C"].push_back(close);
    day["H"].push_back(std::max(open, close) + 0.5);
    day["L"].push_back(std::min(open, close) - 0.5);
    day["V"].push_back(1000 + 10 * static_cast<double>(i));
  }
  return day;
}

/// The bar as it stands after a part of its time: it opens, runs to its low, then to its close.
Bars forming(const Bars& day, size_t bar, int step) {
  Bars state = day;
  const double open = day.at("O")[bar];
  const double close = step == 0 ? open : step == 1 ? day.at("L")[bar] : day.at("C")[bar];
  state["C"][bar] = close;
  if (step < 2) {
    state["H"][bar] = std::max(open, close);
    state["L"][bar] = std::min(open, close);
    state["V"][bar] = day.at("V")[bar] * (step + 1) / 3;
  }
  return state;
}

constexpr const char* script =
    "UP:=C>REF(C,1);\n"
    "MA3:MA(C,3),COLORRED;\n"
    "E:EMA(C,4);\n"
    "S:SMA(H-L,3,1);\n"
    "T:SUM(V,0);\n"
    "TOP:HHV(H,5);\n"
    "B:BARSLAST(CROSS(C,MA3));\n"
    "R:SAR(4,0.02,0.2);\n"
    "UP,NOTICE('rising');\n"
    "CROSS(C,MA3),BK(2);\n";

constexpr size_t bars = 30;

/// The columns that hold what was sent: NOTICE's two and the signal's one.
std::vector<uint32_t> sent_columns(const TestHost& host) {
  std::vector<uint32_t> ids;
  const std::string shapes = host.shapes();
  for (const char* record :
       {"\"NoticeShape\",\"Field1Id\":", "\"FuturesTradeShape\",\"Field1Id\":"}) {
    const size_t at = shapes.find(record);
    ids.push_back(
        static_cast<uint32_t>(std::stoi(shapes.substr(at + std::string_view(record).size()))));
  }
  ids.push_back(ids[0] + 1);
  return ids;
}

class Live : public testing::Test {
 protected:
  void prepare(TestHost& host) {
    host.set_info(0x3005, "", "");
    host.set_keys(morning_keys(bars));
    ASSERT_EQ(host.compile(script).code, 0);
  }
};

TEST_F(Live, ADayBarByBar) {
  const Bars day = morning(bars);
  TestHost live;
  prepare(live);
  clear_events();

  // By the rules, followed here: a notice goes out where the condition is true at some moment of a
  // bar that neither has one already nor stands behind a true bar with one; a moment at which the
  // condition is false arms the next.
  std::vector<size_t> expected_notices;
  std::vector<size_t> expected_signals;
  bool armed_before = true;
  for (size_t bar = 0; bar < bars; ++bar) {
    bool armed = armed_before;
    for (int step = 0; step < 3; ++step) {
      const Bars state = forming(day, bar, step);
      live.feed(state, bar, bar + 1);
      ASSERT_EQ(live.run(static_cast<uint32_t>(bar), true), success);
      const Series& close = state.at("C");
      const bool rising =
          bar > 0 && close[bar] > close[bar - 1] && close[bar] - close[bar - 1] >= 1e-10;
      if (rising && armed) expected_notices.push_back(bar);
      armed = !rising;
      const Series average = live.line("MA3");
      const bool crosses =
          bar > 0 && close[bar] > average[bar] && average[bar - 1] >= close[bar - 1];
      if (crosses) expected_signals.push_back(bar);
    }
    armed_before = armed;
  }

  ASSERT_EQ(events().notices.size(), expected_notices.size());
  EXPECT_GT(expected_notices.size(), 3U);
  for (size_t i = 0; i < expected_notices.size(); ++i) {
    const std::string key =
        "{\"1\":" + std::to_string(live.key_of(expected_notices[i])) + ".000000";
    EXPECT_TRUE(events().notices[i].text.starts_with(key)) << events().notices[i].text;
  }
  ASSERT_EQ(events().signals.size(), expected_signals.size());
  EXPECT_GT(expected_signals.size(), 2U);
  for (size_t i = 0; i < expected_signals.size(); ++i) {
    EXPECT_EQ(events().signals[i].row, expected_signals[i]);
    EXPECT_EQ(events().signals[i].bar, live.key_of(expected_signals[i]));
    EXPECT_EQ(events().signals[i].quantity, 2);
  }

  TestHost full;
  prepare(full);
  full.feed(day);
  ASSERT_EQ(full.run(), success);
  const std::vector<uint32_t> sent = sent_columns(live);
  ASSERT_EQ(get_column_num(live.handle()), get_column_num(full.handle()));
  for (uint32_t id = 20000; id < 20000 + get_column_num(full.handle()); ++id) {
    if (std::ranges::find(sent, id) != sent.end()) continue;
    EXPECT_TRUE(same(live.column(id), full.column(id))) << id << '\n'
                                                        << to_text(live.column(id)) << '\n'
                                                        << to_text(full.column(id));
  }
}

TEST_F(Live, AQuietRunSendsNothingAndArmsEverything) {
  const Bars day = morning(bars);
  TestHost host;
  prepare(host);
  clear_events();
  host.feed(day);
  ASSERT_EQ(host.run(0, false), success);
  EXPECT_TRUE(events().notices.empty());
  EXPECT_TRUE(events().signals.empty());
  // With signals on, the true bars of the history are all new.
  ASSERT_EQ(host.run(0, true), success);
  size_t true_bars = 0;
  for (const double rising : host.line("UP")) true_bars += rising == 1.0 ? 1 : 0;
  EXPECT_EQ(events().notices.size(), true_bars);
}

}  // namespace
}  // namespace quor_test
