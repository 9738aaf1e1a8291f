// A warm run allocates nothing per bar, whatever words a script uses.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "functions/registry.h"
#include "support/counting_new.h"
#include "support/test_host.h"
#include "tables/function_sets.h"
#include "tables/function_table.h"

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

/// Arguments that fit most words: conditions and series first, small numbers behind. A drawing word
/// wants a colour at some position, which varies.
std::string call_of(std::string_view word, int count, int colour_at) {
  static const char* const arguments[] = {"C>O", "H", "3", "2", "0", "1", "2", "1"};
  std::string text(word);
  if (count == 0) return text;
  text += '(';
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += ',';
    text += i == colour_at ? "COLORRED" : arguments[i];
  }
  return text + ")";
}

/// A statement that compiles with the word; empty if none does.
std::string statement_with(TestHost& host, std::string_view word) {
  static const std::map<std::string_view, std::string> particular = {
      {"DRAWCOLORLINE", "DRAWCOLORLINE(C>O,C,COLORRED,COLORGREEN);"},
      {"DRAWGBK", "DRAWGBK(C>O,COLORRED,COLORBLUE,0);"},
      {"DRAWLASTBARICON", "DRAWLASTBARICON(H,'ICO5');"},
      {"DRAWLASTBARTEXT", "DRAWLASTBARTEXT(H,'x');"}};
  if (const auto row = particular.find(word); row != particular.end()) {
    return host.compile(row->second).code == 0 ? row->second : std::string();
  }
  for (int colour_at = -1; colour_at < 8; ++colour_at) {
    for (int count = 0; count <= 8; ++count) {
      if (colour_at >= count && colour_at >= 0) continue;
      const std::string call = call_of(word, count, colour_at);
      std::string statement =
          quor::OutputFunctionSet.contains(word)
              ? call + ";"
              : "X:=" + call + ";Y:=IF(C>O,ABS(" + call + "),1)+MA(" + call + ",3);";
      if (host.compile(statement).code == 0) return statement;
    }
  }
  return {};
}

long allocations_of_run(TestHost& host, uint32_t first_row) {
  const long before = allocation_count();
  uint32_t length = 0;
  release_ptr_val(exec_parser_cal(host.handle(), first_row, 0, &length));
  return allocation_count() - before;
}

TEST(Allocation, NoBarOfAWarmRunAllocates) {
  constexpr size_t rows = 300;
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
  quor::build_function_registry();
  for (const auto& row : quor::FunctionIdTable()) {
    if (is_exempt(row.word) || quor::find_function(row.word) == nullptr) continue;
    TestHost host;
    const std::string statement = statement_with(host, row.word);
    if (statement.empty()) {
      ADD_FAILURE() << "no statement compiles with " << row.word;
      continue;
    }
    host.feed(bars);
    host.run();
    const long one_bar = allocations_of_run(host, rows - 1);
    EXPECT_EQ(allocations_of_run(host, rows - 200), one_bar) << statement;
  }
}

}  // namespace
}  // namespace quor_test
