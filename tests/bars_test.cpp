// Numbers in files of bars: the same bits as the C library reads.
#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <random>
#include <string>

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

}  // namespace
