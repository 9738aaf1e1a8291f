// A run over the last bar again works out what reads something that has changed, and nothing else.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "support/plain_bars.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr size_t row_count = 6;
constexpr uint32_t last_row = row_count - 1;

Bars some_bars() {
  return {{"O", series("1 2 3 2 1 2")},
          {"H", series("3 4 5 4 3 4")},
          {"L", series("1 1 2 1 1 1")},
          {"C", series("2 3 4 3 2 3")},
          {"V", series("10 20 30 20 10 20")}};
}

/// The bars after a tick that moves one field of the last one.
void tick(TestHost& host, const std::string& field) {
  Bars bars = some_bars();
  bars.at(field).back() += 7;
  host.feed(bars, last_row, row_count);
}

TEST(Ticks, CostWhatReadsWhatTheyMove) {
  const struct {
    const char* moved;
    uint64_t calls;
  } cases[] = {{"C", 2}, {"H", 2}, {"V", 1}, {"O", 0}, {nullptr, 0}};
  for (const auto& [moved, calls] : cases) {
    TestHost host;
    ASSERT_EQ(host.compile("A:=ABS(C);B:=ABS(H);D:=ABS(A);E:=ABS(B+V);F:=3;").code, 0);
    host.feed(some_bars());
    host.run();
    // Calls have got their columns, which makes the next run a first one.
    host.run(last_row);
    if (moved != nullptr) tick(host, moved);
    const auto& calculator = quor::find_instance(host.handle())->parser.calculator();
    const uint64_t before = calculator.work();
    EXPECT_EQ(host.run(last_row), success);
    EXPECT_EQ(calculator.work() - before, calls) << (moved != nullptr ? moved : "nothing");
    // What moved has been taken in.
    const uint64_t after = calculator.work();
    host.run(last_row);
    EXPECT_EQ(calculator.work(), after);
  }
}

/// What else than fields a line may follow, or be touched by.
TEST(Ticks, LeaveNothingOutThatMayHaveBecomeAnother) {
  using Event = std::function<void(TestHost&)>;
  const Event moves_open = [](TestHost& host) { tick(host, "O"); };
  const Event moves_volume = [](TestHost& host) { tick(host, "V"); };
  const Event does_nothing = [](TestHost&) {};
  const Event overwrites = [](TestHost& host) {
    set_column_data(host.handle(), host.key_of(last_row), 20000, 5);
  };
  const Event begins = [&overwrites](TestHost& host) {
    if (std::isnan(host.column(20000).back())) overwrites(host);
  };
  const Event sets_period = [](TestHost& host) { host.set_info(0x3005, "600000", "USHA"); };
  const Event adds_a_bar = [](TestHost& host) {
    host.feed({{"C", Series(row_count + 1, 4)}}, row_count, row_count + 1);
  };
  const Event comes_earlier = [](TestHost& host) {
    host.feed_json(R"([{"1":20230101000000,"11":9}])");
  };
  const Event reads_an_argument = [](TestHost& host) {
    for (int32_t id = -1; id > -9; --id) get_field_val_by_index(host.handle(), id, last_row - 1);
  };
  const struct {
    const char* script;
    Event event;
  } cases[] = {
      {"A:ISUP;", moves_open},
      {"A:A+1;", begins},
      {"A:=C;B:=REF(A,1);", overwrites},
      {"A:ABS(C);", overwrites},
      {"A:PERIOD;", sets_period},
      {"A:CODELIKE('6');", sets_period},
      {"A:COST(50);", moves_volume},
      {"A:SUM(C,0);B:BARPOS;", adds_a_bar},
      {"A:SUM(C,0);B:BARPOS;", comes_earlier},
      {"A:FILTER(C>2,3);B:TOTALBARSCOUNT+C;", adds_a_bar},
      {"A:CONDBARS(SMMA(C,3)<=LAST(O<=C,3,1),O<=C);", does_nothing},
      {"A:IF(BARPOS=5,1,EMA(C,3));", reads_an_argument},
      {"N:=2;A:=N*C;SET(N,O);", moves_open},
      {"A:DRAWTEXT(C>O,L,'x');", moves_open},
      {"A:IF(ISLASTBAR,O,C);", moves_open},
  };
  for (const auto& [script, event] : cases) {
    std::vector<Series> columns[2];
    for (const bool is_plain : {false, true}) {
      TestHost host;
      ASSERT_EQ(host.compile(script).code, 0) << script;
      if (is_plain) go_by_plain_bars(host.handle());
      host.feed(some_bars());
      host.run();
      host.run(last_row);
      for (int time = 0; time < 2; ++time) {
        event(host);
        EXPECT_EQ(host.run(last_row), success) << script;
      }
      const uint32_t count = get_column_num(host.handle());
      for (uint32_t id = 20000; id < 20000 + count; ++id) {
        columns[is_plain].push_back(host.column(id));
      }
    }
    ASSERT_EQ(columns[0].size(), columns[1].size()) << script;
    for (size_t i = 0; i < columns[0].size(); ++i) {
      EXPECT_TRUE(same(columns[0][i], columns[1][i]))
          << script << " column " << 20000 + i << ": " << to_text(columns[0][i])
          << ", by plain bars " << to_text(columns[1][i]);
    }
  }
}

TEST(Ticks, SignalEachTime) {
  TestHost host;
  ASSERT_EQ(host.compile("A:BK(C>O,'Long',1);").code, 0);
  host.feed(some_bars());
  host.run();
  host.run(last_row);
  clear_events();
  host.run(last_row, true);
  host.run(last_row, true);
  EXPECT_EQ(events().signals.size(), 2U);
}

}  // namespace
}  // namespace quor_test
