// Which way each statement of a script goes, what its calls remember, and what one more bar costs.
// A script that is sent the slow way has the right values all the same, so that no other test sees
// it.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core/plan.h"
#include "core/plan_walk.h"
#include "interface/instances.h"
#include "support/test_host.h"
#include "support/word_statements.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor_test {
namespace {

constexpr size_t rows = 3000;

Bars bars_of_a_year() {
  Bars bars;
  uint32_t state = 1;
  const auto draw = [&state](uint32_t below) {
    state = state * 1664525 + 1013904223;
    return static_cast<double>((state >> 8) % below);
  };
  double close = 100;
  for (size_t row = 0; row < rows + 2; ++row) {
    close = std::max(close + draw(21) / 10 - 1, 20.0);
    const double open = close + draw(11) / 10 - 0.5;
    bars["O"].push_back(open);
    bars["C"].push_back(close);
    bars["H"].push_back(std::max(open, close) + draw(5) / 10);
    bars["L"].push_back(std::min(open, close) - draw(5) / 10);
    bars["V"].push_back(100 + draw(900));
    bars["AMOUNT"].push_back(1000 + draw(9000));
  }
  return bars;
}

struct Row {
  int line = 0;
  std::string script;
  std::string ways;
  std::string remembers;
  uint64_t work = 0;
};

std::string trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(' ');
  return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<Row> rows_of(const char* file) {
  std::vector<Row> table;
  std::ifstream in(file);
  std::string text;
  for (int line = 1; std::getline(in, text); ++line) {
    if (text.empty() || text[0] == '#') continue;
    std::istringstream cells(text);
    Row row;
    row.line = line;
    std::string work;
    std::getline(cells, row.script, '|');
    std::getline(cells, row.ways, '|');
    std::getline(cells, row.remembers, '|');
    std::getline(cells, work);
    for (std::string* cell : {&row.script, &row.ways, &row.remembers}) *cell = trimmed(*cell);
    row.work = std::stoull(work);
    table.push_back(row);
  }
  return table;
}

std::string ways_of(quor::ScriptParser& parser) {
  std::string ways;
  for (size_t i = 0; i < parser.pool().script.statement_list.size(); ++i) {
    ways += parser.calculator().went_by_columns(i) ? 'c' : 'b';
  }
  return ways;
}

/// What the calls remember, in the order in which the script has them.
std::string memories_of(quor::ScriptParser& parser) {
  constexpr const char* names[] = {"nothing", "values", "order", "late"};
  std::string memories;
  for (const quor::Variable* variable : parser.pool().script.variable_list) {
    if (variable->memory == nullptr && variable->known_values == nullptr) continue;
    const char* const name = names[static_cast<size_t>(variable->remembering)];
    if (!memories.empty()) memories += "; ";
    memories += variable->function_word + ' ' + name;
  }
  return memories;
}

TEST(Ways, OfEachScriptAndWhatOneMoreBarCosts) {
  const std::vector<Row> table = rows_of(QUOR_WAYS);
  ASSERT_FALSE(table.empty());
  const Bars bars = bars_of_a_year();
  for (const Row& row : table) {
    SCOPED_TRACE("ways.txt line " + std::to_string(row.line) + ": " + row.script);
    TestHost host;
    auto& parser = quor::find_instance(host.handle())->parser;
    ASSERT_EQ(host.compile(row.script).code, 0);
    host.feed(bars, 0, rows);
    ASSERT_EQ(host.run(), success);
    EXPECT_EQ(ways_of(parser), row.ways);
    // The first new bar may still take in what the columns have left out.
    for (size_t last = rows; last < rows + 2; ++last) {
      host.feed(bars, last, last + 1);
      const uint64_t before = parser.calculator().work();
      host.run(static_cast<uint32_t>(last));
      if (last == rows) continue;
      EXPECT_LE(parser.calculator().work() - before, row.work);
    }
    EXPECT_EQ(memories_of(parser), row.remembers);
  }
}

/// The way of a word's statement at rows that are blocks of their own, from row 1 on.
std::string ways_from_row_1(std::string_view word, const Bars& bars) {
  TestHost host;
  auto& parser = quor::find_instance(host.handle())->parser;
  parser.calculator().set_block_rule({1, 1, 1, 1});
  EXPECT_EQ(host.compile(statement_of(word)).code, 0) << word;
  std::string ways;
  for (size_t row = 0; row < 12; ++row) {
    host.feed(bars, row, row + 1);
    EXPECT_EQ(host.run(), success) << word;
    if (row > 0) ways += parser.calculator().went_by_columns(0) ? 'c' : 'b';
  }
  return ways;
}

/// Over three bars most column forms begin at row 1, some where the window or the row that they
/// look back at does.
TEST(Ways, BeginAtTheFirstRowThatAColumnFormCanTake) {
  const std::map<std::string_view, std::string> late = {{"REF", "bbbcccccccc"},
                                                        {"SUM", "bbccccccccc"},
                                                        {"EXPMEMA", "bcccccccccc"},
                                                        {"LAST", "bcccccccccc"},
                                                        {"MEMA", "bcccccccccc"}};
  const Bars bars = bars_of_a_year();
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    if (word == "ZIG") continue;  // a word that nobody serves
    const std::string ways = ways_from_row_1(word, bars);
    const bool by_columns = quor::find_function(word)->by_columns();
    const auto found = late.find(word);
    EXPECT_EQ(ways, found == late.end() ? std::string(11, by_columns ? 'c' : 'b') : found->second)
        << word;
  }
}

TEST(Ways, AreSideBySideForCallsOverFieldsAndNumbers) {
  TestHost host;
  auto& parser = quor::find_instance(host.handle())->parser;
  ASSERT_EQ(host.compile("A:=EMA(C,5);B:=EMA(H,10)-SMA(L,9,2);D:=EMA(A,5);E:=EMA(C,V);"
                         "F:=EMA(C+0,5);G:=MA(C,5);SET(A,SMA(C,9,1));"
                         "I:=MAX(MA(C,3),MA(H,4));J:=IF(C>O,MA(C,6),1)+REF(EMA(C,3),1);")
                .code,
            0);
  host.feed(bars_of_a_year(), 0, rows);
  ASSERT_EQ(host.run(), success);
  quor::Plan plan;
  plan.make(parser.pool().script, parser.pool().table());
  std::string counts;
  for (size_t i = 0; i < parser.pool().script.statement_list.size(); ++i) {
    counts += std::to_string(plan.side_by_side(i).size());
  }
  EXPECT_EQ(counts, "120001020");
}

/// The calls of a script that has run of which something holds.
template <typename Holds>
int64_t count_calls(const char* script, const Holds& holds) {
  TestHost host;
  EXPECT_EQ(host.compile(script).code, 0) << script;
  host.feed(bars_of_a_year(), 0, rows);
  EXPECT_EQ(host.run(), success) << script;
  const quor::PlanWalk walk(quor::find_instance(host.handle())->parser.pool().script);
  return std::ranges::count_if(walk.calls(), holds);
}

TEST(Ways, CallsFollowThoseThatTheirSeriesIs) {
  const std::pair<const char*, int64_t> cases[] = {
      {"RSV:=(C-O)/(H-L);K:SMA(RSV,3,1);D:SMA(K,3,1);J:3*K-2*D;", 1},
      {"DIF:EMA(C,12)-EMA(C,26);DEA:EMA(DIF,9);A:(DIF-DEA)*2,COLORSTICK;", 2},
      {"A:=EMA(C,5);B:=EMA(A,3);D:=EMA(A,4);E:=EMA(B,2)-C;", 2},
      {"A:=EMA(C,5);B:=SMA(A,3,1);D:=MA(C,5);E:=MA(D,3);F:=EMA(C,3)+0;G:=EMA(F,3);", 0},
      {"A:=EMA(C,5)+EMA(C,9);B:=EMA(A,3);D:=EMA(C,5)-SMA(C,5,1);E:=EMA(D,3);", 0},
      {"A:=EMA(C,5);B:=EMA(A,3+(C>O));D:=IF(C>O,EMA(A,3),0);E:=REF(EMA(A,4),1);", 0},
      {"A:=EMA(C,5);B:=EMA(A,3);D:=REFX(A,1);", 0},
      {"A:=EMA(C,5);B:=EMA(A,3);SET(A,1);", 0},
  };
  const auto leads = [](const quor::Variable* call) { return call->follower.call != nullptr; };
  for (const auto& [script, leaders] : cases) {
    EXPECT_EQ(count_calls(script, leads), leaders) << script;
  }
}

TEST(Ways, CallsThatSayTheSameAreTwins) {
  const std::pair<const char*, int64_t> cases[] = {
      {"A:MA(C,5)+2*STDP(C,5);B:MA(C,5)-2*STDP(C,5);", 2},
      {"A:(C-LLV(L,9))/(HHV(H,9)-LLV(L,9));B:LLV(L,9)+LLV(H,9)+LLV(L,8);", 3},
      {"A:STDP(C,5)+IF(C>O,STDP(C,5),VARP(C,5));", 2},
      {"X:=C-O;A:STDP(X,5)+STDP(X,5);B:STDP(C-O,5)+STDP(C-O,5);", 0},
      {"A:EMA(C,5);B:EMA(C,5);D:STD(C,5)+STD(C,5);", 2},
      {"A:STDP(C,5)+STDP(C,5);SET(A,1);", 0},
      {"A:RAND(5)+RAND(5)+REFX(C,1)+REFX(C,1);", 0},
  };
  const auto is_twin = [](const quor::Variable* call) { return call->twin != nullptr; };
  for (const auto& [script, twins] : cases) {
    EXPECT_EQ(count_calls(script, is_twin), twins) << script;
  }
}

}  // namespace
}  // namespace quor_test
