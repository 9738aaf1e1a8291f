// Files of bars: numbers have the bits that the C library reads, dates one meaning, columns one
// name.
#include "bars/bars.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

#include "bars/dates.h"
#include "bars/errors.h"
#include "bars/fields.h"
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
