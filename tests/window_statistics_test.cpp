// Window words over pseudo-random bars with nulls, against textbook formulas that walk the window
// by brute force; and what hand-made vectors can't say: exceptions, columns, hostile periods.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "functions/running_statistics.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr size_t row_total = 300;
constexpr int period = 7;

Series random_series(uint32_t seed) {
  std::mt19937 generator(seed);
  Series values;
  for (size_t row = 0; row < row_total; ++row) {
    const double value = static_cast<double>(generator() % 2000) / 16.0 - 20.0;
    values.push_back(generator() % 25 == 0 ? null : value);
  }
  return values;
}

/// The values of `count` rows up to the row, oldest first, as far as there are any.
Series tail(const Series& values, int row, int count) {
  const int first = std::max(row - count + 1, 0);
  return {values.begin() + first, values.begin() + row + 1};
}

double sum(const Series& values) {
  double total = 0.0;
  for (const double value : values) total += value;
  return total;
}
double mean(const Series& values) { return sum(values) / static_cast<double>(values.size()); }

/// The mean product of the distances from the means, to a power each.
double moment(const Series& x, int power_x, const Series& y, int power_y) {
  double total = 0.0;
  for (size_t i = 0; i < x.size(); ++i) {
    total += std::pow(x[i] - mean(x), power_x) * std::pow(y[i] - mean(y), power_y);
  }
  return total / static_cast<double>(x.size());
}
double moment(const Series& x, int power) { return moment(x, power, x, 0); }
double sampled(const Series& x) {
  return moment(x, 2) * static_cast<double>(x.size()) / static_cast<double>(x.size() - 1);
}

Series without_nulls(Series values) {
  std::erase_if(values, [](double value) { return value != value; });
  return values;
}

Series places(size_t count) {
  Series values;
  for (size_t i = 0; i < count; ++i) values.push_back(static_cast<double>(i));
  return values;
}

double slope(const Series& x) {
  const Series t = places(x.size());
  return moment(x, 1, t, 1) / moment(t, 2);
}

double kurtosis(const Series& x) {
  const double n = static_cast<double>(x.size());
  const double population = moment(x, 4) / std::pow(moment(x, 2), 2);
  return (n - 1) / ((n - 2) * (n - 3)) * ((n + 1) * population - 3 * (n - 1));
}

double absolute_deviation(const Series& x) {
  // A null is missing from the mean but still divides it.
  const double center = sum(without_nulls(x)) / static_cast<double>(x.size());
  double total = 0.0;
  for (const double value : x) total += std::abs(value - center);
  return total / static_cast<double>(x.size());
}

/// The greatest value, except that a null counts in the oldest place and nowhere else.
double greatest(const Series& x) {
  const Series values = without_nulls(x);
  return x[0] != x[0] ? null : *std::ranges::max_element(values);
}
Series negated(Series x) {
  for (double& value : x) value = -value;
  return x;
}
double bars_since(const Series& x, double extreme) {
  const auto found = std::ranges::find(x, extreme);
  return static_cast<double>(found == x.end() ? x.size() - 1
                                              : static_cast<size_t>(x.end() - found) - 1);
}

double plain_average(const Series& x) {
  const Series values = without_nulls(x);
  return values.empty() ? null : mean(values);
}

double running_sum(const Series& x) {
  const bool known = x.back() == x.back();
  return known ? sum(without_nulls(x)) : 0.0;
}

double harmonic(const Series& x) {
  double total = 0.0;
  for (const double value : x) total += value == 0.0 ? null : 1.0 / value;
  return static_cast<double>(x.size()) / total;
}

/// The value that 30 percent of the others don't exceed.
double percentile(const Series& x) {
  Series sorted = x;
  std::ranges::sort(sorted, [](double a, double b) { return b != b ? a == a : a < b; });
  return sorted[static_cast<size_t>(std::ceil(static_cast<double>(x.size() - 1) * 0.3))];
}

struct Reference {
  const char* call;  ///< with X for the first series
  int first_row;     ///< before it there is no value
  int span;          ///< how many bars the formula sees
  std::function<double(const Series& x, const Series& y)> value;
};

void PrintTo(const Reference& reference, std::ostream* out) { *out << reference.call; }

const Reference references[] = {
    {"VAR(X,7)", 7, 7, [](auto& x, auto&) { return sampled(x); }},
    {"VARP(X,7)", 7, 7, [](auto& x, auto&) { return moment(x, 2); }},
    {"VARP(X,1)", 1, 1, [](auto& x, auto&) { return moment(x, 2); }},
    {"STD(X,7)", 7, 7, [](auto& x, auto&) { return std::sqrt(sampled(x)); }},
    {"STDP(X,7)", 7, 7, [](auto& x, auto&) { return std::sqrt(moment(x, 2)); }},
    {"DEVSQ(X,7)", 7, 7, [](auto& x, auto&) { return moment(x, 2) * 7; }},
    {"AVEDEV(X,7)", 6, 7, [](auto& x, auto&) { return absolute_deviation(x); }},
    {"KURTOSIS(X,7)", 7, 7, [](auto& x, auto&) { return kurtosis(x); }},
    {"SLOPE(X,7)", 6, 7, [](auto& x, auto&) { return slope(x); }},
    {"FORCAST(X,7)", 7, 7, [](auto& x, auto&) { return mean(x) + 3 * slope(x); }},
    {"TSMA(X,7)", 6, 7, [](auto& x, auto&) { return mean(x) + 4 * slope(x); }},
    {"COVAR(X,O,7)", 0, 7, [](auto& x, auto& y) { return moment(x, 1, y, 1); }},
    {"COEFFICIENTR(X,O,7)", 1, 7,
     [](auto& x, auto& y) { return moment(x, 1, y, 1) / std::sqrt(moment(x, 2) * moment(y, 2)); }},
    {"CORRELATION(X,O,7)", 1, 7,
     [](auto& x, auto& y) { return moment(x, 1, y, 1) / std::sqrt(sampled(x) * sampled(y)); }},
    {"HHV(X,7)", 0, 7, [](auto& x, auto&) { return greatest(x); }},
    {"LLV(X,7)", 0, 7, [](auto& x, auto&) { return -greatest(negated(x)); }},
    {"HHVBARS(X,7)", 0, 7, [](auto& x, auto&) { return bars_since(x, greatest(x)); }},
    {"LLVBARS(X,7)", 0, 7, [](auto& x, auto&) { return bars_since(x, -greatest(negated(x))); }},
    {"HV(X,7)", 1, 8,
     [](auto& x, auto&) {
       return greatest({x.begin(), x.end() - 1});
     }},
    {"LV(X,7)", 1, 8,
     [](auto& x, auto&) {
       return -greatest(negated({x.begin(), x.end() - 1}));
     }},
    {"MA(X,7)", 6, 7, [](auto& x, auto&) { return plain_average(x); }},
    {"SUM(X,7)", 0, 7, [](auto& x, auto&) { return running_sum(x); }},
    {"SUM(X,0)", 0, 1000, [](auto& x, auto&) { return running_sum(x); }},
    {"COUNT(X>0,7)", 0, 7,
     [](auto& x, auto&) {
       return static_cast<double>(std::ranges::count_if(x, [](double v) { return v > 0; }));
     }},
    {"HARMEAN(X,7)", 6, 7, [](auto& x, auto&) { return harmonic(x); }},
    {"PERCENTILE(X,7,30)", 6, 7, [](auto& x, auto&) { return percentile(x); }},
};

class WindowWord : public testing::TestWithParam<Reference> {
 protected:
  /// Runs the call with X written as `x_text` and compares from the row on from which the formula
  /// holds.
  static void compare(const std::string& x_text, int from_row) {
    const Reference& reference = GetParam();
    std::string call = reference.call;
    call.replace(call.find("(X") + 1, 1, x_text);
    TestHost host;
    ASSERT_EQ(host.compile("A:=" + call + ";").code, 0);
    const Bars bars{{"C", random_series(11)}, {"O", random_series(12)}};
    host.feed(bars);
    ASSERT_EQ(host.run(), success);
    const Series got = host.line("A");
    ASSERT_EQ(got.size(), row_total);
    for (int row = 0; row < static_cast<int>(row_total); ++row) {
      const Series x = tail(bars.at("C"), row, reference.span);
      const Series y = tail(bars.at("O"), row, reference.span);
      if (row >= reference.first_row && row < from_row) continue;
      const double expected = row < reference.first_row ? null : reference.value(x, y);
      const double value = got[static_cast<size_t>(row)];
      if (expected != expected) {
        EXPECT_TRUE(value != value) << call << " at row " << row << ": " << value << ", not null";
      } else {
        EXPECT_NEAR(value, expected, 1e-8 * std::max(1.0, std::abs(expected)))
            << call << " at row " << row;
      }
    }
  }
};

TEST_P(WindowWord, FollowsItsFormulaOverAField) { compare("C", 0); }

/// An expression has no column: one that fills from the gate on is full after another window.
TEST_P(WindowWord, FollowsItsFormulaOverAnExpression) { compare("C+0", 2 * period); }

std::string word_of(const testing::TestParamInfo<Reference>& info) {
  std::string name = info.param.call;
  std::ranges::replace_if(
      name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(References, WindowWord, testing::ValuesIn(references), word_of);

TEST(RunningStatistics, KeepsExtremesUntilANull) {
  quor::RunningStatistics moments;
  for (const double value : {3.0, -1.0, 2.0}) moments.take(value);
  EXPECT_EQ(moments.minimum, -1.0);
  EXPECT_EQ(moments.maximum, 3.0);
  EXPECT_NEAR(moments.m1, 4.0 / 3.0, 1e-15);
  EXPECT_NEAR(moments.m2, 26.0 / 3.0, 1e-14);
  moments.take(null);
  moments.take(9.0);
  EXPECT_TRUE(std::isnan(moments.minimum));
  EXPECT_TRUE(std::isnan(moments.maximum));
  EXPECT_EQ(moments.count, 5U);
}

/// The answer of a script over three bars.
std::string answer_of(const std::string& script) {
  TestHost host;
  EXPECT_EQ(host.compile(script).code, 0);
  host.feed({{"C", {1, 2, 3}}});
  return host.run();
}

std::string thrown(const std::string& text) {
  return R"({"ErrCode":4000,"ExtraMsg":"","ErrLine":")" + text + R"("})";
}

TEST(WindowWords, ThrowForANegativeNumberOfBars) {
  for (const char* call : {"STD(C,-2)", "AVEDEV(C,-2)", "SLOPE(C,-2)", "FORCAST(C,-2)",
                           "COVAR(C,C,-2)", "HHVBARS(C,-2)", "WMA(C,-2)", "ADMA(C,-2,1,2)"}) {
    EXPECT_EQ(answer_of(std::string("A:=") + call + ";"), thrown("vector too long")) << call;
  }
  EXPECT_EQ(answer_of("A:=NORMPDF(C,0,-1);"),
            thrown("Invalid parametrization for the distribution."));
}

/// Column ids show to the host, so the order in which columns are taken does too.
TEST(WindowWords, TakeTheirColumnsInOrder) {
  struct Case {
    const char* script;
    uint32_t columns;                                ///< auxiliary ones, the line's own included
    std::vector<std::pair<uint32_t, Series>> known;  ///< id and content
  };
  const Case cases[] = {
      // The average, which is the line's column too, X, the count.
      {"A:=MA(C+1,2);", 3, {{20000, {null, 2.5, 3.5}}, {20001, {2, 3, 4}}, {20002, {2, 2, 2}}}},
      // The line, X, the count, the average.
      {"A:=FORCAST(C+1,2);", 4, {{20001, {2, 3, 4}}, {20003, {null, 2.5, 3.5}}}},
      // The line, X, the result, two counts with the inner average between them.
      {"A:=TRMA(C+1,2);",
       6,
       {{20001, {2, 3, 4}},
        {20002, {null, 2.5, 3}},
        {20003, {2, 1, 2}},
        {20004, {null, 2.5, 3.5}},
        {20005, {2, 2, 2}}}},
      {"A:=COVAR(C+1,C+2,2);", 3, {{20001, {2, 3, 4}}, {20002, {3, 4, 5}}}},
      {"A:=STD(C+1,1);", 2, {{20001, {null, 3, 4}}}},
      {"A:=EMAWH(C+1,1);", 2, {{20001, {2, 3, 4}}}},
      {"A:=HV(C+1,2);", 2, {{20001, {2, 3, null}}}},
      {"A:=COUNT(C+1,2);", 1, {}},
  };
  for (const Case& expected : cases) {
    TestHost host;
    ASSERT_EQ(host.compile(expected.script).code, 0);
    host.feed({{"C", {1, 2, 3}}});
    ASSERT_EQ(host.run(), success);
    for (const auto& [id, values] : expected.known) {
      EXPECT_TRUE(same(host.column(id), values))
          << expected.script << " column " << id << ": " << to_text(host.column(id));
    }
    EXPECT_TRUE(same(host.column(20000 + expected.columns), Series(3, null))) << expected.script;
  }
}

}  // namespace
}  // namespace quor_test
