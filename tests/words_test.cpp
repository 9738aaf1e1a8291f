// Every word of the language answers with a value, a column or a record.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "support/test_host.h"
#include "support/word_statements.h"
#include "tables/function_sets.h"
#include "tables/function_table.h"

namespace quor_test {
namespace {

double one(const char*, const char*, const char*) { return 1.0; }

Bars waves() {
  Bars bars;
  for (int row = 0; row < 40; ++row) {
    const double wave = 10 + std::sin(row) + row % 7;
    bars["O"].push_back(wave);
    bars["C"].push_back(wave + (row % 3 - 1));
    bars["H"].push_back(wave + 2);
    bars["L"].push_back(wave - 2);
    bars["V"].push_back(100 + row);
    bars["AMOUNT"].push_back(wave * (100 + row));
  }
  return bars;
}

bool has_value(const Series& series) {
  return std::ranges::any_of(series, [](double value) { return !std::isnan(value); });
}

TEST(Words, EveryOneAnswers) {
  const Bars bars = waves();
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    if (word == "ZIG") continue;
    const std::string call = statement_of(word);
    TestHost host;
    host.set_info(0x3000, "600000", "USHA");
    set_get_extra_data_callback(host.handle(), one);
    const bool acts = quor::OutputFunctionSet.contains(word);
    const Report report = host.compile(call);
    ASSERT_EQ(report.code, 0) << call << ' ' << report.text;
    host.feed(bars);
    EXPECT_EQ(host.run(), success) << call;
    if (acts) {
      EXPECT_NE(host.shapes(), "[]") << call;
    } else if (word == "NULL" || word == "DRAWNULL") {
      EXPECT_FALSE(has_value(host.line("A"))) << call;
    } else {
      EXPECT_TRUE(has_value(host.line("A"))) << call;
    }
  }
}

TEST(Words, TheZigzagOfThreeLettersIsRefused) {
  TestHost host;
  const Report report = host.compile("A:=1;\nB:=ZIG(C,5);");
  EXPECT_EQ(report.code, 2006);
  EXPECT_EQ(report.message, "ZIG");
  EXPECT_EQ(report.line, 1);
}

}  // namespace
}  // namespace quor_test
