// What the words along the row axis keep from run to run.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr std::string_view vector_too_long =
    R"({"ErrCode":4000,"ExtraMsg":"","ErrLine":"vector too long"})";

TEST(Filter, ASignalThatGoesAwayIsForgotten) {
  const auto answer = [](TestHost& host, const char* signals) {
    host.feed({{"C", series(signals)}});
    host.run(2);
    return host.line("A").back();
  };
  TestHost host;
  ASSERT_EQ(host.compile("A:=FILTER(C,5);").code, 0);
  host.feed({{"C", series("0 0")}});
  host.run();
  EXPECT_EQ(answer(host, "0 0 1"), 1);
  EXPECT_EQ(answer(host, "0 0 0"), 0);
  EXPECT_EQ(answer(host, "0 0 1"), 1);
  host.feed({{"C", series("0 0 0 1")}});
  host.run(2);
  EXPECT_EQ(to_text(host.line("A")), "0 0 0 1");
}

/// The rule of BACKSET word by word: every mark is set where a bar sets it.
void backset_by_the_rule(const Series& signals, const Series& counts, Series& cells) {
  const int rows = static_cast<int>(cells.size());
  const auto mark = [&](int first, int last) {
    for (int r = std::max(first, 0); r <= std::min(last, rows - 1); ++r) {
      cells[static_cast<size_t>(r)] = 1;
    }
  };
  for (int step = 0; step < rows; ++step) {
    const int row = counts[0] < 0 ? step : rows - 1 - step;
    const auto at = static_cast<size_t>(row);
    const double count = counts[at];
    if (count == 0 || count != count) {
      cells[at] = null;
    } else if (signals[at] == 0) {
      if (cells[at] != 1) cells[at] = 0;
    } else if (const int m = static_cast<int>(count); m > 0) {
      mark(row - m + 1, row);
    } else {
      mark(row, row - m - 1);
    }
  }
}

TEST(Backset, MarksOfAnySizeAndDirection) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    const size_t rows = 1 + random() % 40;
    Series cells(rows, null);
    TestHost host;
    ASSERT_EQ(host.compile("A:=BACKSET(C,O);").code, 0);
    // A second run with other values meets the marks of the first one.
    for (int run = 0; run < 2; ++run) {
      Series signals;
      Series counts;
      for (size_t row = 0; row < rows; ++row) {
        signals.push_back(random() % 3 == 0 ? 1 : 0);
        const int count = static_cast<int>(random() % 25) - 12;
        counts.push_back(random() % 9 == 0 ? null : count / 2.0);
      }
      host.feed({{"C", signals}, {"O", counts}});
      ASSERT_EQ(host.run(), success);
      backset_by_the_rule(signals, counts, cells);
      ASSERT_TRUE(same(host.line("A"), cells))
          << "C " << to_text(signals) << "\nO " << to_text(counts) << "\ngot "
          << to_text(host.line("A")) << "\nexpected " << to_text(cells);
    }
  }
}

TEST(Zigzag, BarByBarGivesTheLineOfAFullRun) {
  Bars bars;
  for (int row = 0; row < 60; ++row) bars["C"].push_back(50 + row * 37 % 23 + row * 11 % 7);
  const char* const script =
      "A:=ZIGZAG(C,9,0);B:=PEAK(C,9,1,0);D:=TROUGHBARS(C,9,2,0);E:=ZIGZAG(C+1,20,1);";
  TestHost full;
  ASSERT_EQ(full.compile(script).code, 0);
  full.feed(bars);
  full.run();
  TestHost growing;
  growing.compile(script);
  for (size_t row = 0; row < 60; ++row) {
    growing.feed(bars, row, row + 1);
    growing.run(static_cast<uint32_t>(row));
  }
  for (const char* line : {"A", "B", "D", "E"}) {
    EXPECT_TRUE(same(growing.line(line), full.line(line))) << line;
  }
}

TEST(Zigzag, ReservesAColumnMoreForASeriesWithoutOne) {
  const auto columns_of = [](const char* script) {
    TestHost host;
    host.compile(script);
    host.feed({{"C", series("1 2")}});
    host.run();
    return get_column_num(host.handle());
  };
  // The time column, C, the result and the auxiliary columns.
  EXPECT_EQ(columns_of("A:=ZIGZAG(C,5,1);"), columns_of("A:=C+1;") + 4);
  EXPECT_EQ(columns_of("A:=ZIGZAG(C+1,5,1);"), columns_of("A:=C+1;") + 5);
  EXPECT_EQ(columns_of("A:=PEAK(C,5,1,1);"), columns_of("A:=C+1;") + 5);
  EXPECT_EQ(columns_of("A:=PEAK(C+1,5,1,1);"), columns_of("A:=C+1;") + 6);
}

TEST(Wave, EarlierBarsOfALaterRunStandAsTheyStood) {
  const Bars bars = {{"H", series("1 3 2 4 1")}};
  TestHost host;
  ASSERT_EQ(host.compile("A:=WAVEPEAK(1);B:=H;").code, 0);
  host.feed(bars, 0, 2);
  host.run();
  host.feed(bars, 2, 5);
  host.run(2);
  EXPECT_EQ(to_text(host.line("A")), "0 0 0 1 0");
  host.run(0);
  EXPECT_EQ(to_text(host.line("A")), "0 1 0 1 0");
}

TEST(Divergence, AnExpressionIsFilledOnceForTheRowsOfTheFirstBar) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=DIVERGENCE(C+0,O+0,1,3,1);").code, 0);
  host.feed({{"C", series("1 5 3 4 2 1")}, {"O", series("9 2 9 3 9 9")}});
  host.run();
  EXPECT_EQ(to_text(host.line("A")), "0 0 0 0 1 0");
  // The changed peak of C isn't seen, the changed O is.
  host.feed({{"C", series("1 0 3 4 2 1")}, {"O", series("9 2 9 3 9 9")}});
  host.run();
  EXPECT_EQ(to_text(host.line("A")), "0 0 0 0 1 0");
  host.feed({{"C", series("1 5 3 4 2 1")}, {"O", series("9 9 9 3 9 9")}});
  host.run();
  EXPECT_EQ(to_text(host.line("A")), "0 0 0 0 0 0");
}

TEST(Divergence, TheSecondSeriesTakesItsColumnOnceItHasAValue) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=DIVERGENCE(C+0,HHV(O+0,2)*10,1,3,1);").code, 0);
  host.feed({{"C", series("1 2 3")}, {"O", series("4 6 5")}});
  ASSERT_EQ(host.run(), success);
  // Behind the columns of the line and of the call.
  const auto first = static_cast<uint32_t>(host.id_of("A")) + 1;
  EXPECT_EQ(to_text(host.column(first)), "1 2 3");
  EXPECT_EQ(to_text(host.column(first + 1)), "4 6 5");
  EXPECT_EQ(to_text(host.column(first + 2)), "40 60 60");
}

TEST(Divergence, AWidthBelowEmptyIsRefused) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=DIVERGENCE(C,O,1,-5,1);").code, 0);
  host.feed({{"C", series("1 2 3")}, {"O", series("1 2 3")}});
  EXPECT_EQ(host.run(), vector_too_long);
}

}  // namespace
}  // namespace quor_test
