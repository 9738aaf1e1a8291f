// Files of bars: numbers have the bits that the C library reads, dates one meaning, columns one
// name.
#include "bars/bars.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <tuple>

#include "bars/dates.h"
#include "bars/errors.h"
#include "bars/fields.h"
#include "bars/period.h"
#include "bars/text.h"

namespace {

uint64_t bits_of(const std::string& text) {
  const auto value = quor_bars::to_number(text);
  return std::bit_cast<uint64_t>(value.value_or(-1e300));
}

TEST(BarNumbers, HaveTheBitsOfTheirText) {
  std::mt19937_64 random(11);
  for (int round = 0; round < 200000; ++round) {
    const size_t digits = 1 + random() % 20;
    std::string text = random() % 4 == 0 ? "-" : "";
    const size_t point = random() % (2 * digits);
    for (size_t i = 0; i < digits; ++i) {
      if (i == point) text += '.';
      text += static_cast<char>('0' + random() % (random() % 3 == 0 ? 1 : 10));
    }
    if (random() % 8 == 0) text += "e-3";
    ASSERT_EQ(bits_of(text), std::bit_cast<uint64_t>(std::strtod(text.c_str(), nullptr))) << text;
  }
}

TEST(BarNumbers, AreTheWholeText) {
  for (const char* text : {"", "-", "+", ".", "-.", "1.2.3", "1-", "--1", "1,5", " 1", "1 ", "0x10",
                           "1e", "inf", "1e999"}) {
    EXPECT_FALSE(quor_bars::to_number(text)) << '"' << text << '"';
  }
  EXPECT_EQ(bits_of("+5."), bits_of("5"));
  EXPECT_EQ(bits_of("-0"), bits_of("-0.0"));
  EXPECT_NE(bits_of("-0"), bits_of("0"));
}

TEST(BarDates, HaveOneMeaning) {
  const std::pair<const char*, int64_t> dates[] = {
      {"2024-02-29", 20240229000000},      {"2024/02/29 23:59", 20240229235900},
      {"20240131 093507", 20240131093507}, {"2024-01-31T09:35:07.999-05:00", 20240131093507},
      {"0001-01-01 UTC", 10101000000},     {"9999-12-31 23:59:59Z", 99991231235959},
  };
  for (const auto& [text, key] : dates) {
    EXPECT_EQ(quor_bars::parse_key(text).value_or(0), key) << text;
  }
  for (const char* text :
       {"2023-02-29", "1900-02-29", "2024-04-31", "2024-00-10", "2024-01-00", "0000-01-01",
        "01/02/2024", "31.01.2024", "2024-1-2", "2024-01-31 24:00", "2024-01-31 09:60",
        "20240131.5", "Jan 2, 2024", "1704067200", "2024-01-31 09:35 PM", ""}) {
    EXPECT_FALSE(quor_bars::parse_key(text)) << text;
  }
}

TEST(BarColumns, GoByTheirWordsOrAsTheyAreNamed) {
  EXPECT_EQ(quor_bars::field_id("Open_Interest"), quor_bars::field_id("OI"));
  EXPECT_EQ(quor_bars::field_id(" settlement"), 72U);
  EXPECT_FALSE(quor_bars::field_id("adjusted close"));
  const std::string text = "Day,close,last,vol,date\n2024-01-02,1,2,3,x\n2024-01-02,4,5,6,x\n";
  quor_bars::Naming naming;
  naming.time = "day";
  naming.fields = {{quor_bars::field_close, "last"},
                   {quor_bars::field_open, "last"},
                   {quor_bars::field_volume, std::nullopt}};
  naming.dates_repeat = true;
  const quor_bars::Bars bars = quor_bars::parse_bars(text, "a", naming);
  EXPECT_EQ(bars.keys, (std::vector<int64_t>{20240102000000, 20240102000000}));
  const std::map<uint32_t, std::vector<double>> columns = {{quor_bars::field_open, {2, 5}},
                                                           {quor_bars::field_close, {2, 5}}};
  EXPECT_EQ(bars.columns, columns);
  naming.dates_repeat = false;
  EXPECT_THROW(quor_bars::parse_bars(text, "a", naming), quor_bars::ReadError);
  naming.fields = {{quor_bars::field_close, "lost"}};
  EXPECT_THROW(quor_bars::parse_bars(text, "a", naming), quor_bars::ReadError);
}

std::string fault_of(const std::string& text) {
  try {
    quor_bars::parse_bars(text, "a");
  } catch (const quor_bars::ReadError& error) {
    return error.what();
  }
  return {};
}

TEST(BarFiles, ArePartedByCommasSemicolonsOrTabs) {
  const std::vector<double> closes = {1.5, 2};
  for (const char* text :
       {"date,close\n2024-01-02,1.5\n2024-01-03,2\n", "date;close\n2024-01-02;1.5\n2024-01-03;2\n",
        "date\tclose\n2024-01-02\t1.5\n2024-01-03\t2\n",
        "\"date\"\t\"close\"\tnote\n2024-01-02\t1.5\ta;b\n2024-01-03\t2\t\n"}) {
    EXPECT_EQ(quor_bars::parse_bars(text, "a").columns.at(quor_bars::field_close), closes) << text;
  }
}

/// Whole, as parsed from one text.
quor_bars::Bars whole(const std::string& text) { return quor_bars::parse_bars(text, "a"); }

/// The same text cut into pieces of a length.
quor_bars::Bars in_pieces(const std::string& text, size_t length) {
  quor_bars::Bars bars;
  quor_bars::BarReader reader("a", {}, [&](const quor_bars::BarRow& row) {
    bars.keys.push_back(row.key);
    for (size_t i = 0; i < row.values.size(); ++i) {
      bars.columns[reader.fields()[i]].push_back(row.values[i]);
    }
  });
  for (size_t at = 0; at < text.size(); at += length) reader.feed(text.substr(at, length));
  reader.finish();
  return bars;
}

TEST(BarFiles, MayComeInPiecesCutAnywhere) {
  for (const char* text : {
           "date,close,note\n2024-01-02,1.5,x\n2024-01-03,2,\n",
           "\xEF\xBB\xBF\r\n \r\ndate,close\r\n\r\n2024-01-02,1\r\n2024-01-03,2",
           "date,close\r2024-01-02,1\r2024-01-03,2\r",
           "\"date\" , \"close\"\n2024-01-02,\"1\"\n\"2024-01-03\" ,2 \n\n",
           "date,note,close\n2024-01-02,\"a, \"\"b\"\"\nc\",1\n2024-01-03,\"\",2\n",
           "date|close\n2024-01-02|1\ndate|close\n2024-01-03|2\n",
       }) {
    const quor_bars::Bars expected = whole(text);
    EXPECT_EQ(expected.keys, (std::vector<int64_t>{20240102000000, 20240103000000})) << text;
    for (const size_t length : {1, 2, 3, 7}) {
      const quor_bars::Bars bars = in_pieces(text, length);
      EXPECT_EQ(bars.keys, expected.keys) << text << length;
      EXPECT_EQ(bars.columns, expected.columns) << text << length;
    }
  }
}

TEST(BarFiles, CountLineEndsInsideOfQuotes) {
  for (const char* text :
       {"date,note,close\n2024-01-02,\"a\n\nb\",1\nx,,1\n", "date,close\n\n\r\n \nx,1\n"}) {
    EXPECT_EQ(fault_of(text).substr(0, 8), "a:5: 'x'") << text;
  }
  EXPECT_EQ(fault_of("date,close\n2024-01-02,1\n2024-01-03,\"2\n2024-01-04,3\n"),
            "a:3: a quote is out of place");
  EXPECT_EQ(fault_of("date,close\n2024-01-02,1\n2024-01-03,2\"2\n"),
            "a:3: a quote is out of place");
}

TEST(BarFiles, HaveEachDateOnce) {
  // Upward, downward, and neither.
  for (const char* text : {"date,close\n20240102,1\n\n20240103,2\n20240103,3\n",
                           "date,close\n20240103,1\n\n20240102,2\n20240102,3\n",
                           "date,close\n20240102,1\n\n20240104,2\n20240103,3\n20240104,3\n"}) {
    EXPECT_EQ(fault_of(text).substr(3), ": same date as in line 4") << text;
  }
}

TEST(BarPeriods, EndBehindTheirBars) {
  const auto end = [](int64_t key, const char* period) {
    return quor_bars::end_of_period(quor_bars::seconds_of(key),
                                    quor_bars::parse_period(period).value());
  };
  const std::tuple<int64_t, const char*, int64_t> cases[] = {
      {20240228150000, "day", 20240229000000},     {20240229000000, "day", 20240301000000},
      {20240226000000, "week", 20240304000000},    {20240303235959, "week", 20240304000000},
      {20240229150000, "month", 20240301000000},   {20231231000000, "month", 20240101000000},
      {20240331000000, "quarter", 20240401000000}, {20241001000000, "quarter", 20250101000000},
      {20240615000000, "year", 20250101000000},    {20240228235500, "5min", 20240229000000},
      {20240228093000, "1min", 20240228093100},    {20240228093000, "2hour", 20240228113000},
      {20240228093000, "15s", 20240228093015},     {20240228093000, "1s", 20240228093001},
  };
  for (const auto& [key, period, expected] : cases) {
    EXPECT_EQ(end(key, period), quor_bars::seconds_of(expected)) << key << ' ' << period;
  }
}

TEST(BarFiles, SayWhatIsWrongAndWhere) {
  const std::pair<const char*, const char*> faults[] = {
      {"date,close\n01/01/2024,1\n",
       "a:2: '01/01/2024' is no date; write 2024-01-31, 2024-01-31 09:35:00 or 20240131093500, the "
       "year first"},
      {"date,close\n2024-02-30,1\n",
       "a:2: '2024-02-30' is no date; no calendar and no clock has it"},
      {"date,Adj Close\n2024-01-02,1\n",
       "a:1: the header names no 'close' column; it names date, Adj Close; 'Adj Close' is near"},
      {"date,clsoe,cloze\n2024-01-02,1,1\n",
       "a:1: the header names no 'close' column; it names date, clsoe, cloze; 'cloze' is near"},
      {"day,close\n2024-01-02,1\n", "a:1: the header names no 'date' column; it names day, close"},
      {"date;close\n2024-01-02;1,5\n",
       "a:2: '1,5' in the column of CLOSE (11) is no number; decimals stand behind a point, and "
       "nothing parts thousands"},
      {"date,close\n2024-01-02,n/a\n", "a:2: 'n/a' in the column of CLOSE (11) is no number"},
  };
  for (const auto& [text, told] : faults) EXPECT_EQ(fault_of(text), told);
  std::istringstream packed("\x1F\x8B\x08 and more");
  EXPECT_THROW(quor_bars::read_stream(packed, "a.gz"), quor_bars::ReadError);
}

TEST(BarFiles, AreDoubtedWhereNoMarketCanHaveQuotedThem) {
  const auto bars = quor_bars::parse_bars(
      "date,high,low,close\n2024-01-02,3,1,2\n2024-01-03,1,3.5,2\n2024-01-04,1,4,2\n", "a");
  EXPECT_EQ(bars.doubts, (std::vector<std::string>{"a:3: the high 1 is below the low 3.5",
                                                   "a:3: the high 1 is below the close 2",
                                                   "a:3: the close 2 is below the low 3.5"}));
}

}  // namespace
