// A warm run allocates nothing per bar, whatever words a script uses.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/counting_new.h"
#include "support/test_host.h"
#include "support/word_statements.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor_test {
namespace {

/// Notices and signals build texts and call out; the calendar and its log lines may allocate; RGB
/// and SOUND become other words before they are compiled.
bool is_exempt(std::string_view word) {
  static const std::set<std::string_view> words = {
      "NOTICE",  "BK",    "BP",    "SK",    "SP",      "BPK",  "SPK",    "CLOSEOUT",
      "ZIG",     "YEAR",  "MONTH", "DAY",   "HOUR",    "DATE", "MINUTE", "TIME",
      "QUARTER", "DATE1", "RGB",   "SOUND", "WEEKDAY", "TIME0"};
  return words.contains(word);
}

/// A value is also an operand, and an argument of other calls.
std::string statements_with(std::string_view word) {
  std::string statement = statement_of(word);
  if (!statement.starts_with("A:=")) return statement;
  const std::string value = statement.substr(3, statement.size() - 4);
  return statement + "B:=IF(C>O,ABS(" + value + "),1)+MA(" + value + ",3);";
}

long allocations_of_run(TestHost& host, uint32_t first_row) {
  const long before = allocation_count();
  uint32_t length = 0;
  release_ptr_val(exec_parser_cal(host.handle(), first_row, 0, &length));
  return allocation_count() - before;
}

TEST(Allocation, NoBarOfAWarmRunAllocates) {
  constexpr uint32_t rows = 300;
  Bars bars;
  for (size_t row = 0; row < rows; ++row) {
    const auto wave = static_cast<double>(row * 37 % 101);
    bars["O"].push_back(100 + wave);
    bars["C"].push_back(100 + static_cast<double>(row * 53 % 97));
    bars["H"].push_back(210 + wave);
    bars["L"].push_back(90 - wave / 4);
    bars["V"].push_back(1000 + wave);
    bars["AMOUNT"].push_back(150000 + wave);
  }
  Bars moved = bars;
  for (auto& [field, values] : moved) values.back() += 1;
  quor::build_function_registry();
  for (const auto& row : quor::FunctionIdTable()) {
    if (is_exempt(row.word) || quor::find_function(row.word) == nullptr) continue;
    TestHost host;
    const std::string statements = statements_with(row.word);
    ASSERT_EQ(host.compile(statements).code, 0) << statements;
    host.feed(bars);
    // Over blank cells results need no memory of their own, so the second run is warm.
    host.run();
    host.run();
    // What reads nothing that has changed would be left out.
    host.feed(moved, rows - 1, rows);
    const long one_bar = allocations_of_run(host, rows - 1);
    EXPECT_LE(allocations_of_run(host, rows - 200), one_bar) << statements;
  }
}

}  // namespace
}  // namespace quor_test
