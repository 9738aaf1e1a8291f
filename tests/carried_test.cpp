// Words that carry their value on from bar to bar give what they give when they work it out anew:
// at each bar in an instance of its own that has run over nothing before, and after the bars behind
// a value have changed.
#include <gtest/gtest.h>

#include <random>

#include "support/test_host.h"

namespace quor_test {
namespace {

// Each call looks at fields only, so that an instance which runs over one bar has all it needs.
constexpr const char* carried[] = {
    "HHV(C,5)",
    "LLV(C,5)",
    "HHVBARS(C,7)",
    "LLVBARS(C,O+1)",
    "HHV(C,O*2)",
    "HV(C,4)",
    "SUM(C,0)",
    "COUNT(C>O,0)",
    "BARSLAST(C>O)",
    "BARSLASTCOUNT(C>O)",
    "VALUEWHEN(C>O,O)",
    "BARSSINCEN(C>O,6)",
    "BARSSINCEN(C>3,O)",
    "CONDBARS(C>O,C=2)",
    "CONDBARS(C>8,C>O)",
    "EXIST(C>3,9)",
    "EXIST(C>3,O*3)",
    "EVERY(C>0,3.5)",
    "EVERY(C>O-9,0-1)",
    "NDAY(C,O,2)",
    "UPNDAY(C,2)",
    "DOWNNDAY(C,0-1)",
    "LAST(C>3,6,2)",
    "LAST(BARPOS+C=0-9,0-1,2)",
    "EXIST(BARPOS+ISNULL(C)*9=0-9,0-1)",
    "COUNT(BARSLAST(C>O)>1,0)",
    "BARSLAST(HHV(C,4)=C)",
    "BARSLAST(REF(C,2)>O)",
    "EVERY(COUNT(C>O,3)<3,5)",
    "NEWHBARS(C,2)",
    "NEWLBARS1(C,O,O)",
};

std::string script_of(const char* call) { return std::string("A:=") + call + ";"; }

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

TEST(Carried, EqualsWhatABarGivesByItself) {
  Rows rows(1);
  const Bars bars = random_bars(rows, 60);
  for (const char* call : carried) {
    TestHost whole;
    ASSERT_EQ(whole.compile(script_of(call)).code, 0) << call;
    whole.feed(bars);
    ASSERT_EQ(whole.run(0), success);
    const Series values = whole.line("A");
    for (size_t row = 0; row < values.size(); ++row) {
      // The word must not come to a bar with a memory of the ones before.
      TestHost alone;
      alone.compile(script_of(call));
      alone.feed(bars);
      ASSERT_EQ(alone.run(static_cast<uint32_t>(row)), success);
      ASSERT_TRUE(same(alone.line("A")[row], values[row])) << call << " at row " << row;
    }
  }
}

/// Forms the last bar anew, rewrites an earlier one or adds one.
void change(Rows& rows, Bars& bars, TestHost& host) {
  const size_t count = bars["C"].size();
  size_t row = rows.below(2) == 0 ? rows.below(count) : count - 1;
  if (rows.below(3) == 0) {
    rows.append(bars);
    row = count;
  } else {
    bars["C"][row] = rows.value();
  }
  host.feed(bars, row, row + 1);
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

TEST(Carried, ForgetsWhatHasChanged) {
  for (const char* call : carried) {
    Rows rows(2);
    Bars bars = random_bars(rows, 20);
    TestHost host;
    host.compile(script_of(call));
    host.feed(bars);
    ASSERT_EQ(host.run(0), success);
    for (int round = 0; round < 60; ++round) {
      change(rows, bars, host);
      const auto last = static_cast<uint32_t>(bars["C"].size() - 1);
      ASSERT_EQ(host.run(round % 5 == 0 ? 0 : last), success);
      TestHost alone;
      alone.compile(script_of(call));
      alone.feed(bars);
      ASSERT_EQ(alone.run(last), success);
      ASSERT_TRUE(same(host.line("A").back(), alone.line("A").back())) << call << " " << round;
    }
  }
}

// Words that a count over all bars may take as known at the bars behind it.
constexpr const char* counted[] = {
    "HV(C-O,3)",
    "LV(C,3)",
    "DEVSQ(C-O,3)",
    "KURTOSIS(C,5)",
    "SLOPE(C+O,3)",
    "FORCAST(C-O,3)",
    "COVAR(C,O+1,3)",
    "1+CORRELATION(C-O,C,3)",
    "1+COEFFICIENTR(C,O,3)",
    "MEMA(C,3)",
    "EXPMEMA(C,3)",
    "TRMA(C+O,4)",
    "SMMA(C+O,3)",
    "TSMA(C+O,3)",
    "ADMA(C,3,2,5)",
    "HARMEAN(C,3)",
    "PERCENTILE(C+O,3,50)",
    "MV(C,O)",
    "SORT(0,1,C,O)",
    "SORTPOS(1,1,C,O)",
    "NORMPDF(C,O,2)*9",
    "NUMPOW(C-O,3,1)",
    "SUMBARS(C,9)",
    "CONDBARS(C>O,O>C)",
    "BARSSINCEN(C>O,3)",
    "BARSCOUNT(C)",
    "GET(C)",
    "1+LAST(MA(C,3)>2,4,2)",
    "1+NDAY(C,O,2)",
    "1+UPNDAY(C,2)",
    "1+DOWNNDAY(C,2)",
    "NEWHBARS(C,1)",
    "NEWLBARS1(C,MA(O,3),1)",
    "1+ISUP",
    "1+ISDOWN",
    "BARPOS-5",
    "MA(C,3)-REF(MA(C,3),2)+1",
    "REF(EMA(REF(SUM(C,2),1),2),1)",
};

TEST(Carried, CountsWhatALineShowsAtEachBar) {
  for (const char* call : counted) {
    Rows rows(5);
    Bars bars = random_bars(rows, 30);
    TestHost host;
    const std::string test = std::string(call) + ">1";
    ASSERT_EQ(host.compile("A:=" + test + ";B:=COUNT(" + test + ",0);").code, 0) << call;
    host.feed(bars);
    for (int round = 0; round < 20; ++round) {
      ASSERT_EQ(host.run(0), success);
      const Series holds = host.line("A");
      const Series count = host.line("B");
      double sum = 0.0;
      for (size_t row = 0; row < holds.size(); ++row) {
        sum += holds[row];
        ASSERT_EQ(count[row], sum) << call << " at row " << row << ", round " << round;
      }
      EXPECT_GT(sum, 0.0) << call;
      change(rows, bars, host);
    }
  }
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
