// What words that carry their value on from bar to bar give over many bars, against another way to
// it, and after the bars behind a value have changed. That no memory shows: memories_test.cpp.
#include <gtest/gtest.h>

#include <random>

#include "support/test_host.h"

namespace quor_test {
namespace {

class Rows {
 public:
  explicit Rows(uint64_t seed) : random_(seed) {}

  double value() {
    const auto draw = static_cast<double>(random_() % 6);
    return draw == 5.0 ? null : draw;
  }
  size_t below(size_t bound) { return random_() % bound; }

  void append(Bars& bars) {
    bars["C"].push_back(value());
    bars["O"].push_back(value());
  }

 private:
  std::mt19937_64 random_;
};

Bars random_bars(Rows& rows, size_t count) {
  Bars bars;
  for (size_t i = 0; i < count; ++i) rows.append(bars);
  return bars;
}

/// The stretch of a negative N goes on to rows below 0, which hold no bar to count.
TEST(Carried, CountsNothingBelowTheFirstRow) {
  TestHost host;
  host.compile("A:=EXIST(COUNT(C=C OR 1,0)=1,0-1);B:=EVERY(COUNT(C=C OR 1,0),0-1);");
  host.feed({{"C", {1, 2, 3}}});
  ASSERT_EQ(host.run(0), success);
  // No bar of row 2's stretch of three bars lies below 0, but bars of the rows before do.
  EXPECT_TRUE(same(host.line("A"), {1, 1, 1})) << to_text(host.line("A"));
  EXPECT_TRUE(same(host.line("B"), {0, 0, 1})) << to_text(host.line("B"));
}

/// How far back the N-th value lies that beats the bar's own, by a look at each bar.
double bars_to_beyond(const Series& values, size_t row, int n) {
  for (size_t back = 1; back <= row; ++back) {
    if (values[row - back] > values[row] && --n == 0) return static_cast<double>(back);
  }
  return null;
}

void expect_bars_to_beyond(const Series& values, const TestHost& host, size_t first) {
  const Series once = host.line("A");
  const Series thrice = host.line("B");
  for (size_t row = first; row < values.size(); ++row) {
    ASSERT_TRUE(same(once[row], bars_to_beyond(values, row, 1))) << row;
    ASSERT_TRUE(same(thrice[row], bars_to_beyond(values, row, 3))) << row;
  }
}

/// The memory of these words is in blocks of 16, 256, 4096 rows.
TEST(Carried, LeapsOverBarsThatLieNotBeyond) {
  Rows rows(3);
  // Great values are rare, so that the walks from them are long.
  const auto draw = [&rows] {
    const double value = 1e6 / (1.0 + static_cast<double>(rows.below(100000)));
    return rows.below(8) == 0 ? null : value;
  };
  Bars bars;
  std::vector<int64_t> keys;
  for (size_t row = 0; row < 9000; ++row) {
    bars["C"].push_back(draw());
    keys.push_back(20240101000000 + 10 * static_cast<int64_t>(row));
  }
  // This one leads back to the first row, over the largest blocks.
  bars["C"][8600] = 2.5e6;
  TestHost host;
  host.compile("A:=NEWHBARS(C,1);B:=NEWLBARS1(0-C,0-C,3);");
  host.set_keys(keys);
  host.feed(bars);
  ASSERT_EQ(host.run(0), success);
  expect_bars_to_beyond(bars["C"], host, 0);

  bars["C"][4500] = 2e6;
  host.feed(bars, 4500, 4501);
  ASSERT_EQ(host.run(4500), success);
  expect_bars_to_beyond(bars["C"], host, 4500);

  bars["C"].insert(bars["C"].begin() + 300, 3e6);
  keys.insert(keys.begin() + 300, keys[300] - 1);
  host.set_keys(keys);
  host.feed(bars, 300, 301);
  ASSERT_EQ(host.run(200), success);
  expect_bars_to_beyond(bars["C"], host, 200);
}

/// From one peak to the one before is what the words with M of 1 tell of the bar in between.
TEST(Carried, CountsTurnsAsAHopFromTurnToTurnDoes) {
  Rows rows(4);
  TestHost host;
  host.compile("A:=PEAKBARS(C,3,1,0);B:=PEAKBARS(C,3,3,0);D:=PEAK(C,3,3,0);E:=TROUGH(C,3,9/2,0);");
  const Bars bars = random_bars(rows, 200);
  host.feed(bars);
  ASSERT_EQ(host.run(0), success);
  const Series last = host.line("A");
  const Series third = host.line("B");
  const Series value = host.line("D");
  for (int row = 0; row < 200; ++row) {
    int turn = row + 1;
    for (int hop = 0; hop < 3 && turn >= 0; ++hop) {
      const double bars_ago = turn > 0 ? last[turn - 1] : null;
      turn = bars_ago >= 0.0 ? turn - 1 - static_cast<int>(bars_ago) : -1;
    }
    ASSERT_TRUE(same(third[row], turn < 0 ? null : row - turn)) << row;
    ASSERT_TRUE(same(value[row], turn < 0 ? null : bars.at("C")[turn])) << row;
  }
  EXPECT_GE(third.back(), 2.0);
  EXPECT_TRUE(same(host.line("E"), Series(200, null)));
}

TEST(Carried, ForgetsTurnsThatHaveMoved) {
  TestHost host;
  host.compile("A:=PEAKBARS(C,5,1,0);B:=PEAKBARS(C,5,2,0);D:=TROUGHBARS(C,5,1,0);");
  // A swing of 5 turns at each bar; the first rises from row 0.
  Bars bars = {{"C", {1, 10, 1, 10, 1, 10, 1}}};
  host.feed(bars);
  ASSERT_EQ(host.run(0), success);
  EXPECT_TRUE(same(host.line("A"), {null, 0, 1, 0, 1, 0, 1})) << to_text(host.line("A"));
  EXPECT_TRUE(same(host.line("B"), {null, null, null, 2, 3, 2, 3})) << to_text(host.line("B"));
  // The rise to row 3 goes on to row 4, and the fall behind it to row 6.
  bars["C"][4] = 20;
  host.feed(bars, 4, 5);
  ASSERT_EQ(host.run(6), success);
  EXPECT_TRUE(same(host.line("A"), {null, 0, 1, 2, 0, 1, 2})) << to_text(host.line("A"));
  EXPECT_TRUE(same(host.line("B"), {null, null, null, null, 3, 4, 5})) << to_text(host.line("B"));
  EXPECT_TRUE(same(host.line("D"), {null, null, 0, 1, 2, 3, 0})) << to_text(host.line("D"));
}

}  // namespace
}  // namespace quor_test
