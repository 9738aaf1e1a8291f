// Text helpers and numbers as text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "core/value.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace quor {
namespace {

TEST(Strings, SplitInOrderPrefersTheListOverThePosition) {
  constexpr std::string_view separators[] = {":", "@"};
  using Pieces = std::vector<std::string_view>;
  EXPECT_EQ(split_in_order("A@B:C@D", separators), (Pieces{"A@B", "C", "D"}));
  EXPECT_EQ(split_in_order("::A", separators), Pieces{"A"});
  EXPECT_EQ(split("1ErrLine.2ErrLine.", "ErrLine."), (Pieces{"1", "2"}));
}

TEST(Strings, QuotesOfEitherKindToggleOneFlag) {
  std::string text = "a'b\"c'd\"e";
  upper_case_outside_quotes(text);
  EXPECT_EQ(text, "A'b\"C'd\"E");
}

TEST(Numbers, WholeTokens) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* text;
    double value;
  } numbers[] = {
      {"1E5", 1e5},          {"1.5", 1.5},
      {".5", 0.5},           {"5.", 5},
      {"-1.500000", -1.5},   {"+2", 2},
      {"0X10", 16},          {"0x1.8p1", 3},
      {"INF", infinity},     {"infinity", infinity},
      {"1e400", infinity},   {"1e400000", infinity},
      {"-1e999", -infinity}, {"0.0", 0},
  };
  for (const auto& [text, value] : numbers) EXPECT_EQ(to_number(text), value) << text;
  EXPECT_TRUE(is_null(to_number("NAN").value_or(0.0)));
  for (const char* text :
       {"", "1E", "1E-5", "1E+5", "A", "1A", "0X", " 1", "1 ", "--1", "+-1", "."}) {
    EXPECT_FALSE(to_number(text)) << '"' << text << '"';
  }
}

TEST(Numbers, FarDigitsAndPowersMakeUpForOneAnother) {
  const std::string zeros(400, '0');
  EXPECT_EQ(to_number("0." + zeros + "25e400"), 0.25);
  EXPECT_EQ(leading_number("0." + zeros + "25e+401"), 2.5);
  EXPECT_EQ(leading_number("25" + zeros + "e-401"), 2.5);
}

TEST(Numbers, HexadecimalsAreRoundedOnceToTheEvenNeighbour) {
  const struct {
    const char* text;
    double value;
  } numbers[] = {
      {"0x1.00000000000008p0", 1},
      {"0x1.00000000000018p0", 0x1.0000000000002p0},
      {"0x1.0000000000000800000000000001p0", 0x1.0000000000001p0},
      {"0x123456789ABCDEF012345", 0x1.23456789abcdfp80},
      {"0x.8P+3", 4},
      {"0x1p-1074", 5e-324},
      {"0x1p-1075", 0},
      {"0x1.8p-1075", 5e-324},
      {"0xFFFFFFFFFFFFFFFFp-1138", 5e-324},
      {"0x1.fffffffffffff8p-1023", 0x1p-1022},
      {"0x1p1024", std::numeric_limits<double>::infinity()},
      {"0x1p99999999999999999999", std::numeric_limits<double>::infinity()},
      {"0x0p5", 0},
  };
  for (const auto& [text, value] : numbers) EXPECT_EQ(leading_number(text), value) << text;
  for (const char* text : {"0x1p", "0x1p+", "0x1p+-3", "0x1p-+3", "0x1.2.3", "0x1g"})
    EXPECT_FALSE(to_number(text)) << text;
}

TEST(Numbers, LeadingTexts) {
  EXPECT_EQ(leading_number("1E-5;x"), 1e-5);
  EXPECT_EQ(leading_number("ABC"), 0.0);
  EXPECT_EQ(leading_number("1e-400"), 0.0);
  EXPECT_EQ(leading_number("2.5e-324"), 5e-324);
  EXPECT_EQ(leading_number(" 1"), 0.0);
  EXPECT_EQ(leading_number_after_blanks(" \t1.5x"), 1.5);
  EXPECT_EQ(leading_integer("12AB"), 12);
  EXPECT_EQ(leading_integer("0x1F"), 31);
  EXPECT_EQ(leading_integer("0XZ"), 0);
  EXPECT_EQ(leading_integer("0x-5"), 0);
  EXPECT_EQ(leading_integer("-7"), -7);
  EXPECT_EQ(leading_integer(""), 0);
  EXPECT_EQ(leading_integer("99999999999999999999"), std::numeric_limits<int32_t>::max());
  EXPECT_THROW(parse_integer("x"), std::invalid_argument);
}

TEST(Numbers, FixedTextsAreThoseOfPrintf) {
  const double values[] = {0.0,
                           -0.0,
                           0.1,
                           1.0 / 3,
                           2.5e-7,
                           4.5e-7,
                           123456789.1234565,
                           1e300,
                           -1e22,
                           5e-324,
                           1.7976931348623157e308,
                           std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity()};
  for (const double value : values) {
    char printed[400];
    std::snprintf(printed, sizeof printed, "%f", value);
    EXPECT_EQ(fixed_text(value), printed);
  }
  EXPECT_EQ(fixed_text(null_value), "-nan");
}

TEST(Values, ConversionsToIntegersAreGuarded) {
  const int32_t lowest = std::numeric_limits<int32_t>::min();
  EXPECT_EQ(to_int(2.9), 2);
  EXPECT_EQ(to_int(-2.9), -2);
  EXPECT_EQ(to_int(2147483647.9), 2147483647);
  EXPECT_EQ(to_int(-2147483648.9), lowest);
  for (const double value : {2147483648.0, -2147483649.0, 1e300, -1e300, null_value,
                             std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(to_int(value), lowest) << value;
  }
  EXPECT_EQ(to_int64(9223372036854775808.0), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(to_int64(20240105093000.9), 20240105093000);
}

}  // namespace
}  // namespace quor
