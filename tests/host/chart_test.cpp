// What a picture is made of: places of texts, readable colours, numbers, marks of the time axis.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "host/chart/placement.h"
#include "host/chart/time_axis.h"
#include "host/chart/time_marks.h"
#include "host/panes/color.h"
#include "host/panes/numbers.h"
#include "host/panes/theme.h"
#include "tables/style_table.h"

namespace quor_host {

std::ostream& operator<<(std::ostream& out, const Box& box) {
  return out << box.left << ".." << box.right << ", " << box.top << ".." << box.bottom;
}

namespace {

constexpr Box sheet{0.0, 0.0, 400.0, 300.0};
constexpr Leeway near_by{48.0, 48.0, true};

TEST(Placement, keeps_a_free_place) {
  Placement placement(sheet);
  const Box wanted{10.0, 20.0, 50.0, 32.0};
  EXPECT_EQ(placement.place(wanted, true, near_by), wanted);
}

TEST(Placement, gives_way_in_the_direction_asked_for_and_only_then_in_the_other) {
  const Box candle{100.0, 100.0, 108.0, 140.0};
  const Box wanted{90.0, 110.0, 118.0, 122.0};
  Placement up(sheet);
  up.occupy(candle);
  EXPECT_LE(up.place(wanted, true, near_by)->bottom, candle.top);
  Placement down(sheet);
  down.occupy(candle);
  EXPECT_GE(down.place(wanted, false, near_by)->top, candle.bottom);
  Placement blocked(sheet);
  blocked.occupy(candle);
  blocked.occupy({0.0, 0.0, 400.0, 100.0});
  EXPECT_GE(blocked.place(wanted, true, near_by)->top, candle.bottom);
  EXPECT_FALSE(blocked.place(wanted, true, {48.0}));
}

TEST(Placement, is_brought_into_the_bounds_or_given_up) {
  Placement placement(sheet);
  EXPECT_EQ(placement.place({-30.0, -5.0, 10.0, 7.0}, true, near_by), (Box{0.0, 0.0, 40.0, 12.0}));
  EXPECT_FALSE(placement.place({0.0, 0.0, 401.0, 10.0}, false, near_by));
}

TEST(Placement, lets_no_two_texts_of_a_crowd_meet_nor_a_text_and_a_bar) {
  std::mt19937 random(7);
  const auto below = [&random](unsigned bound) { return static_cast<double>(random() % bound); };
  Placement placement(sheet);
  std::vector<Box> taken;
  for (int bar = 0; bar < 100; ++bar) {
    const double top = 100.0 + below(80);
    taken.push_back({bar * 4.0, top, bar * 4.0 + 3.0, top + 1.0 + below(40)});
    placement.occupy(taken.back());
  }
  size_t placed = 0;
  for (int text = 0; text < 300; ++text) {
    const Box bar = taken[static_cast<size_t>(below(100))];
    const double width = 5.0 + below(60);
    const Box wanted{bar.left - width / 2, bar.top, bar.left + width / 2, bar.top + 12.0};
    const auto box = placement.place(wanted, text % 2 == 0, near_by);
    if (!box) continue;
    ++placed;
    for (const Box& other : taken) ASSERT_FALSE(box->meets(other)) << *box << " and " << other;
    ASSERT_LE(std::abs(box->top - wanted.top), near_by.ahead);
    taken.push_back(*box);
  }
  EXPECT_GT(placed, 20U);
}

/// The colours that scripts can name, the automatic ones, and others.
std::vector<std::string> brushes() {
  std::vector<std::string> keys = {"Brush.Gray9", "#131722", "#FEFEFE", "no such key"};
  for (const std::string_view word : quor::StyleWordSet) {
    if (const auto key = quor::colour_brush(word)) keys.emplace_back(*key);
  }
  for (unsigned step = 0; step < 10; ++step) keys.emplace_back(quor::auto_colour(step));
  return keys;
}

TEST(Theme, lets_no_colour_of_a_script_vanish) {
  EXPECT_NEAR(contrast(rgb(0x000000), rgb(0xFFFFFF)), 21.0, 1e-9);
  for (const char* name : {"light", "dark"}) {
    const Theme& theme = theme_named(name);
    for (const std::string& brush : brushes()) {
      EXPECT_GE(contrast(theme.line(brush), theme.ground), 3.0) << name << ' ' << brush;
      EXPECT_GE(contrast(theme.text(brush), theme.ground), 4.5) << name << ' ' << brush;
    }
    for (const Color color : {theme.label, theme.ink, theme.rise, theme.fall}) {
      EXPECT_GE(contrast(color, theme.ground), 4.5) << name;
    }
    for (const Color color : {theme.buy, theme.sell, theme.close_out, theme.rise, theme.fall}) {
      EXPECT_GE(contrast(ink_on(color), color), 4.5) << name << ", a word on its tag";
    }
  }
}

TEST(Theme, changes_a_colour_no_more_than_it_must) {
  const Color red = rgb(0xCC3030);
  EXPECT_EQ(theme_named("light").line("TempBrushKey.#CC3030"), red);
  const Color yellow = theme_named("light").line("TempBrushKey.#FFD933");
  EXPECT_NEAR(contrast(yellow, theme_named("light").ground), 3.0, 0.05);
  EXPECT_GT(yellow.red, yellow.green);
  EXPECT_GT(yellow.green, 2 * yellow.blue);
  // White on white was meant to be the strongest line, not the palest.
  EXPECT_GT(contrast(theme_named("light").line("#FFFFFF"), theme_named("light").ground), 9.9);
  EXPECT_GT(contrast(theme_named("dark").line("#000000"), theme_named("dark").ground), 9.9);
}

TEST(Numbers, are_grouped_or_shortened) {
  EXPECT_EQ(short_text(2813.0284, 2), "2813.03");
  EXPECT_EQ(short_text(66781.84, 2), "66,781.84");
  EXPECT_EQ(short_text(-123456.5, 1), "-123,456.5");
  EXPECT_EQ(short_text(999999.0, 0), "999,999");
  EXPECT_EQ(short_text(1103169000000.0, 0), "1.10T");
  EXPECT_EQ(short_text(-57921400000.0, 0), "-57.9B");
  EXPECT_EQ(short_text(579214000.0, 0), "579M");
  EXPECT_EQ(short_text(-1e99, 2), "-1.00e+99");
  EXPECT_EQ(grouped_text(1234567.891, 2), "1,234,567.89");
  EXPECT_EQ(grouped_text(-9999.0, 0), "-9999");
}

TEST(Numbers, have_the_decimals_of_the_prices) {
  const auto decimals = [](std::vector<double> prices) { return decimals_of(prices); };
  EXPECT_EQ(decimals({10.0, 11.0}), 0);
  EXPECT_EQ(decimals({10.0, 11.2, NAN}), 1);
  EXPECT_EQ(decimals({1438.359985, 1455.219971}), 2);  // from 32 bits
  EXPECT_EQ(decimals({1.0 / 3.0}), 4);
  EXPECT_EQ(decimals({0.0000123}), 7);
  EXPECT_EQ(decimals({}), 0);
  EXPECT_EQ(decimals_for(8000.0), 2);
  EXPECT_EQ(decimals_for(0.0123), 5);
}

TEST(Numbers, of_ticks_tell_their_steps_apart) {
  EXPECT_EQ(nice_step(100.0, 5.0), 20.0);
  EXPECT_EQ(nice_step(0.7, 10.0), 0.05);
  EXPECT_EQ(tick_text(0.05, 0.05, 0.7), "0.05");
  EXPECT_EQ(tick_text(3e-17, 0.05, 0.7), "0");
  EXPECT_EQ(tick_text(1.12e12, 2e10, 1.14e12), "1.12T");
  EXPECT_EQ(tick_text(2e9, 2e9, 9e9), "2B");
  EXPECT_EQ(tick_text(64000.0, 1000.0, 76000.0), "64,000");
  EXPECT_EQ(tick_text(2e98, 2e98, 1e99), "2.00e+98");
  EXPECT_EQ(tick_text(450000.0, 50000.0, 500000.0), "450K");
}

TEST(TimeAxis, draws_every_row_once_however_many_there_are) {
  for (const size_t rows : {1U, 7U, 120U, 1000U, 5105U, 200000U}) {
    const TimeAxis axis(12.0, 1130.0, 30, rows);
    size_t next = 30;
    double x = axis.left();
    for (const Slot& slot : axis.slots()) {
      ASSERT_EQ(slot.begin, next);
      ASSERT_GT(slot.end, slot.begin);
      ASSERT_GT(slot.x, x);
      next = slot.end;
      x = slot.x;
    }
    EXPECT_EQ(next, 30 + rows);
    EXPECT_LE(axis.slots().size(), 1118U);
    EXPECT_LT(x, axis.right());
    EXPECT_EQ(std::fmod(axis.bar_width(), 2.0), 1.0);
    EXPECT_LE(axis.bar_width(), axis.slot_width());
  }
}

std::vector<int64_t> daily_keys(int first_year, int years) {
  std::vector<int64_t> keys;
  for (int64_t year = first_year; year < first_year + years; ++year) {
    for (int64_t month = 1; month <= 12; ++month) {
      for (int64_t day = 1; day <= 28; ++day) {
        keys.push_back(((year * 100 + month) * 100 + day) * 1000000);
      }
    }
  }
  return keys;
}

std::string texts_of(const std::vector<TimeMark>& marks) {
  std::string texts;
  for (const TimeMark& mark : marks) texts += (texts.empty() ? "" : " ") + mark.text;
  return texts;
}

TEST(TimeMarks, name_the_first_bars_of_years_and_months) {
  const std::vector<int64_t> keys = daily_keys(2023, 2);  // 28 bars a month, 336 a year
  EXPECT_EQ(texts_of(time_marks(keys, 0, 300.0)), "2024");
  EXPECT_EQ(texts_of(time_marks(keys, 0, 80.0)), "Apr Jul Oct 2024 Apr Jul Oct");
  EXPECT_EQ(texts_of(time_marks(keys, 336 - 55, 20.0)),
            "Dec 2024 Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec");
  const std::vector<TimeMark> marks = time_marks(keys, 0, 80.0);
  EXPECT_EQ(marks[3].row, 336U);
  EXPECT_TRUE(marks[3].begins_year);
  EXPECT_TRUE(marks[2].begins_month);
  EXPECT_FALSE(marks[2].begins_year);
}

TEST(TimeMarks, name_days_and_times_where_there_is_room) {
  std::vector<int64_t> keys;
  for (const int64_t day : {20240105, 20240108}) {
    for (int64_t minute = 570; minute <= 690; minute += 5) {
      keys.push_back(day * 1000000 + (minute / 60 * 100 + minute % 60) * 100);
    }
  }
  EXPECT_EQ(texts_of(time_marks(keys, 0, 10.0)), "10:00 Jan 8 11:00");
  EXPECT_EQ(texts_of(time_marks(keys, 0, 6.0)), "10:00 10:30 11:00 Jan 8 10:00 10:30 11:00 11:30");
  EXPECT_TRUE(is_intraday(keys));
  EXPECT_EQ(texts_of(time_marks(std::vector<int64_t>{20240105000000}, 0, 10.0)), "5");
}

TEST(TimeMarks, never_stand_closer_than_they_may) {
  const std::vector<int64_t> keys = daily_keys(1940, 100);
  for (const double room : {10.0, 45.0, 400.0, 3000.0}) {
    const std::vector<TimeMark> marks = time_marks(keys, 0, room);
    ASSERT_GE(marks.size(), 2U);
    for (size_t i = 1; i < marks.size(); ++i) {
      ASSERT_GE(static_cast<double>(marks[i].row - marks[i - 1].row), room);
    }
  }
}

}  // namespace
}  // namespace quor_host
