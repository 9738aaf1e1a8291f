// Longer periods made of shorter bars.
#include "bars/resample.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "bars/fields.h"
#include "bars/period.h"

namespace quor_test {
namespace {

using quor_bars::Bars;

constexpr uint32_t settle = quor::built_in_field_id("SETTLE");

std::string text_of(const std::vector<double>& values) {
  std::string text;
  for (const double value : values) {
    text += std::isnan(value) ? "- " : std::to_string(static_cast<int>(value)) + ' ';
  }
  return text;
}

Bars quarter_hours() {
  const double null = std::nan("");
  Bars bars;
  bars.keys = {20240105144500, 20240105150000, 20240108093000, 20240108094500,
               20240108103000, 20240108104500, 20240109093000};
  bars.columns[quor_bars::field_open] = {null, 2, 3, 4, 5, 6, 7};
  bars.columns[quor_bars::field_high] = {12, 11, 13, null, 15, 14, 17};
  bars.columns[quor_bars::field_low] = {2, 1, 3, 2, 5, 4, 7};
  bars.columns[quor_bars::field_close] = {9, 8, 7, 6, 5, null, 4};
  bars.columns[quor_bars::field_volume] = {10, 20, 30, 40, null, null, 60};
  bars.columns[settle] = {null, null, 1, null, null, null, null};
  return bars;
}

struct Case {
  const char* period;
  std::vector<int64_t> keys;
  const char* open;
  const char* high;
  const char* low;
  const char* close;
  const char* volume;
  const char* settle;
};

TEST(Resample, JoinsTheBarsOfAPeriod) {
  const Case cases[] = {
      {"day",
       {20240105144500, 20240108093000, 20240109093000},
       "2 3 7 ",
       "12 15 17 ",
       "1 2 7 ",
       "8 5 4 ",
       "30 70 60 ",
       "- 1 - "},
      {"hour",
       {20240105144500, 20240105150000, 20240108093000, 20240108103000, 20240109093000},
       "- 2 3 5 7 ",
       "12 11 13 15 17 ",
       "2 1 2 4 7 ",
       "9 8 6 5 4 ",
       "10 20 70 - 60 ",
       "- - 1 - - "},
      {"week",
       {20240105144500, 20240108093000},
       "2 3 ",
       "12 17 ",
       "1 2 ",
       "8 4 ",
       "30 130 ",
       "- 1 "},
      {"year", {20240105144500}, "2 ", "17 ", "1 ", "4 ", "160 ", "1 "},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.period);
    const Bars longer =
        quor_bars::resampled(quarter_hours(), quor_bars::parse_period(one.period).value());
    EXPECT_EQ(longer.keys, one.keys);
    EXPECT_EQ(text_of(longer.columns.at(quor_bars::field_open)), one.open);
    EXPECT_EQ(text_of(longer.columns.at(quor_bars::field_high)), one.high);
    EXPECT_EQ(text_of(longer.columns.at(quor_bars::field_low)), one.low);
    EXPECT_EQ(text_of(longer.columns.at(quor_bars::field_close)), one.close);
    EXPECT_EQ(text_of(longer.columns.at(quor_bars::field_volume)), one.volume);
    EXPECT_EQ(text_of(longer.columns.at(settle)), one.settle);
  }
}

TEST(Resample, ShowsWhatIsOver) {
  const Bars bars = quarter_hours();
  const uint32_t day = quor_bars::period_of_a_day;
  const auto over = [&](uint32_t field, uint32_t period, size_t first) {
    return text_of(quor_bars::last_finished(bars, field, period, first));
  };
  EXPECT_EQ(over(quor_bars::field_close, day, 0), "- - 8 8 8 8 5 ");
  EXPECT_EQ(over(quor_bars::field_volume, day, 4), "30 30 70 ");
  EXPECT_EQ(over(quor_bars::field_high, 0x303C, 1), "12 11 11 13 13 15 ");
  EXPECT_EQ(over(quor_bars::field_low, 0x7000, 0), "- - - - - - - ");
}

TEST(Resample, ShowsWhatIsUnderWay) {
  const Bars bars = quarter_hours();
  const uint32_t day = quor_bars::period_of_a_day;
  const auto so_far = [&](uint32_t field, uint32_t period, size_t first) {
    return text_of(quor_bars::under_way(bars, field, period, first));
  };
  EXPECT_EQ(so_far(quor_bars::field_open, day, 0), "- 2 3 3 3 3 7 ");
  EXPECT_EQ(so_far(quor_bars::field_close, day, 0), "9 8 7 6 5 5 4 ");
  EXPECT_EQ(so_far(quor_bars::field_volume, day, 4), "70 70 60 ");
  EXPECT_EQ(so_far(quor_bars::field_high, 0x303C, 1), "11 13 13 15 15 17 ");
  EXPECT_EQ(so_far(quor_bars::field_low, 0x7000, 7), "");
}

TEST(Resample, KnowsWhichPeriodIsLonger) {
  const char* const periods[] = {"5s",   "1min",  "7min",    "hour", "day",
                                 "week", "month", "quarter", "year"};
  for (size_t i = 0; i < std::size(periods); ++i) {
    for (size_t j = 0; j < std::size(periods); ++j) {
      EXPECT_EQ(quor_bars::is_longer(*quor_bars::parse_period(periods[i]),
                                     *quor_bars::parse_period(periods[j])),
                i > j)
          << periods[i] << ' ' << periods[j];
    }
  }
}

}  // namespace
}  // namespace quor_test
