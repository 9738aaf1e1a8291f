// Memory that runs out at any place of any call: a defined answer, nothing leaks, and the instance
// works once memory is back. And memory that stays level over many instances.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/counting_new.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr std::string_view script =
    "CONST W:2;\n"
    "MA2:MA(C,N),COLORRED,LINETHICK2;\n"
    "UP:=IF(C>O,HHV(H,W),L)>0;\n"
    "X:\"600000$C\"+EMA(C,3);\n"
    "C>2,BK(2);\n"
    "CROSS(C,2),NOTICE('over');\n"
    "DRAWTEXT(UP,H,'up'),COLORBLUE;\n";
constexpr std::string_view parameters = R"([{"PARAM_NAME":"N","DEFAULT":2}])";
constexpr std::string_view lines = R"([{"LINE_NAME":"MA2","COLOR_KEY":"k","LINE_THICK":3}])";
constexpr std::string_view rows =
    R"([{"1":20240102000000,"11":1,"7":2,"8":3,"9":1},{"1":20240103000000,"11":2,"7":1,"8":3,"9":1},)"
    R"({"1":20240104000000,"11":4,"7":2,"8":5,"9":2}])";

constexpr std::string_view older_row = R"([{"1":20240101000000,"11":7}])";

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

char* compile(int64_t handle) {
  return get_pre_parse_res(handle, script.data(), parameters.data(), lines.data(), size_of(script),
                           size_of(parameters), size_of(lines), nullptr);
}

void feed(int64_t handle) { set_row_data(handle, rows.data(), size_of(rows)); }

char* run(int64_t handle) { return exec_parser_cal(handle, 0, 1, nullptr); }

char* read_average(int64_t handle) {
  const int32_t id = get_field_id_by_param_name(handle, "MA2", 3);
  return get_data_arr(handle, static_cast<uint32_t>(id), get_row_num(handle) - 1, 3, nullptr);
}

std::string text_of(char* buffer) {
  std::string text = buffer == nullptr ? "" : buffer;
  release_ptr_val(buffer);
  return text;
}

bool tells(const std::string& answer, int code) {
  return answer.find("\"ErrCode\":" + std::to_string(code) + ",") != std::string::npos;
}

/// Reads all there is, whatever state a failure has left.
void read_all(int64_t handle) {
  for (int id = 0; id < 60; ++id) get_field_val_by_index(handle, ~id, 1);
  for (const auto list : {get_shapes, get_invoke_functions, get_parser_variable_fields}) {
    text_of(list(handle, nullptr));
  }
  text_of(read_average(handle));
  text_of(run(handle));
}

/// The averages of closes 1, 2, 4 over two bars.
void expect_right_run(int64_t handle) {
  EXPECT_EQ(text_of(run(handle)), success);
  EXPECT_EQ(text_of(read_average(handle)), R"({"count":3,"data":[null,1.500000,3.000000]})");
}

void expect_works(int64_t handle) {
  const std::string report = text_of(compile(handle));
  ASSERT_TRUE(tells(report, 0)) << report;
  feed(handle);
  expect_right_run(handle);
}

/// Plays with an instance: `prepare`, then `attempt` with memory that runs out at its first
/// allocation, then `recover`, which gets the attempt's answer, empty for a null; and all of it
/// again with memory that runs out at the second allocation, and so on until there is enough. No
/// round may leave anything behind, unless the process keeps what it makes.
struct Play {
  std::function<void(int64_t handle)> prepare = [](int64_t) {};
  std::function<char*(int64_t handle)> attempt;
  std::function<void(int64_t handle, const std::string& answer)> recover;
  bool process_keeps = false;

  bool play_once(long count, Exhaustion exhaustion) const {
    const TestHost host;
    prepare(host.handle());
    fail_allocations(count, exhaustion);
    char* answer = attempt(host.handle());
    const bool refused = stop_failing();
    recover(host.handle(), text_of(answer));
    return refused;
  }

  void play(Exhaustion exhaustion, long step) const {
    bool refused = true;
    for (long count = 0; refused; count += step) {
      SCOPED_TRACE("allocations before the failure: " + std::to_string(count));
      const long live = live_allocations();
      refused = play_once(count, exhaustion);
      ASSERT_TRUE(process_keeps || live_allocations() == live);
      ASSERT_FALSE(testing::Test::HasFailure());
    }
  }

  void play() const {
    play(Exhaustion::of_one, 1);
    // Most places are alike to a memory that stays empty.
    play(Exhaustion::from_there_on, 7);
  }
};

class ExhaustionTest : public testing::Test {
 protected:
  // What the process keeps for good is made by a first session.
  void SetUp() override {
    set_logger_handler([](uint8_t, const char*, uint64_t) {}, 0);
    set_parser_notice_callback_handler([](int64_t, uint32_t, uint64_t, const char*) {});
    set_trade_callback([](int64_t, int64_t, uint32_t, uint64_t, uint32_t, uint32_t, int64_t) {});
    const TestHost host;
    expect_works(host.handle());
  }
};

TEST_F(ExhaustionTest, OfACreation) {
  int64_t made = 0;
  Play{.attempt =
           [&made](int64_t) {
             made = create_instance();
             return static_cast<char*>(nullptr);
           },
       .recover =
           [&made](int64_t, const std::string&) {
             if (made != 0) expect_works(made);
             delete_instance(made);
           }}
      .play();
}

/// A script behind another, whose rows and results it drops.
TEST_F(ExhaustionTest, OfACompile) {
  const auto run_another = [](int64_t handle) {
    text_of(get_pre_parse_res(handle, "Y:MA(C,MAX(1,2));", "", "", 17, 0, 0, nullptr));
    feed(handle);
    text_of(run(handle));
  };
  Play{.prepare = run_another,
       .attempt = compile,
       .recover =
           [](int64_t handle, const std::string& report) {
             EXPECT_TRUE(report.empty() || tells(report, 0) || tells(report, 4000)) << report;
             if (tells(report, 0)) {
               feed(handle);
               expect_right_run(handle);
             }
             read_all(handle);
             expect_works(handle);
           }}
      .play();
}

/// New bars at the end, then an older one before the others: all of a text comes in or nothing.
TEST_F(ExhaustionTest, OfAnIntake) {
  Play{.prepare = [](int64_t handle) { text_of(compile(handle)); },
       .attempt =
           [](int64_t handle) {
             feed(handle);
             return static_cast<char*>(nullptr);
           },
       .recover =
           [](int64_t handle, const std::string&) {
             EXPECT_EQ(get_row_num(handle) % 3, 0U);
             feed(handle);
             expect_right_run(handle);
           }}
      .play();
  Play{.prepare = expect_works,
       .attempt =
           [](int64_t handle) {
             set_row_data(handle, older_row.data(), size_of(older_row));
             set_column_data(handle, 20240104000000, 77, 5.0);
             set_column_data(handle, 20240105000000, 11, 5.0);
             return static_cast<char*>(nullptr);
           },
       .recover =
           [](int64_t handle, const std::string&) {
             read_all(handle);
             clear_data(handle);
             feed(handle);
             expect_right_run(handle);
           }}
      .play();
}

TEST_F(ExhaustionTest, OfARun) {
  Play{.prepare =
           [](int64_t handle) {
             text_of(compile(handle));
             feed(handle);
           },
       .attempt = run,
       .recover =
           [](int64_t handle, const std::string& answer) {
             EXPECT_TRUE(answer.empty() || tells(answer, 0) || tells(answer, 4000)) << answer;
             read_all(handle);
             expect_right_run(handle);
           }}
      .play();
}

/// A script that goes by blocks: each cell holds what it held or what it gets.
TEST_F(ExhaustionTest, OfARunByBlocks) {
  constexpr std::string_view by_blocks =
      "A:MA(C,3);B:7;D:HHV(H,5)+EMA(A,4);E:=STD(C-O,4);F:SMA(C,3,1)/SMA(O,3,1);G:REF(E,2)*2;"
      "X:COUNT(C>O,9);STICKLINE(C>O,C,O,1,0);";
  const auto bars_of = [](double move) {
    Bars bars;
    for (size_t row = 0; row < 150; ++row) {
      const auto wave = static_cast<double>(row * 37 % 11);
      bars["C"].push_back(50 + wave + move);
      bars["O"].push_back(52 + static_cast<double>(row % 7));
      bars["H"].push_back(70 + wave);
      bars["L"].push_back(40);
    }
    return bars;
  };
  std::vector<int64_t> keys;
  for (size_t row = 0; row < 150; ++row) keys.push_back(row_key({}, row));
  const auto rows_of = [&keys](const Bars& bars) { return rows_json(bars, 0, 150, keys); };
  const std::string texts[] = {rows_of(bars_of(0)), rows_of(bars_of(1))};
  // By name, for an id may be lost with the memory of its column.
  const auto lines_of = [](int64_t handle) {
    Series cells;
    for (const char* name : {"A", "B", "D", "E", "F", "G", "X"}) {
      const int32_t id = get_field_id_by_param_name(handle, name, 1);
      for (int32_t row = 0; row < 150; ++row) {
        cells.push_back(get_data_by_col_row(handle, row, static_cast<uint32_t>(id)));
      }
    }
    return cells;
  };
  const auto begin = [&](int64_t handle) {
    text_of(get_pre_parse_res(handle, by_blocks.data(), "", "", size_of(by_blocks), 0, 0, nullptr));
  };
  const auto take = [&texts](int64_t handle, int which) {
    set_row_data(handle, texts[which].data(), size_of(texts[which]));
  };
  Series results[2];
  for (const int which : {0, 1}) {
    const TestHost host;
    begin(host.handle());
    take(host.handle(), which);
    text_of(run(host.handle()));
    results[which] = lines_of(host.handle());
  }
  for (const bool has_run : {false, true}) {
    Play{.prepare =
             [&](int64_t handle) {
               begin(handle);
               take(handle, 0);
               if (has_run) text_of(run(handle));
               if (has_run) take(handle, 1);
             },
         .attempt = run,
         .recover =
             [&](int64_t handle, const std::string& answer) {
               EXPECT_TRUE(answer.empty() || tells(answer, 0) || tells(answer, 4000)) << answer;
               const Series left = lines_of(handle);
               const Series& expected = results[has_run];
               for (size_t i = 0; i < expected.size(); ++i) {
                 const double before = has_run ? results[0][i] : null;
                 ASSERT_TRUE(same(left[i], expected[i]) || same(left[i], before))
                     << "line " << i / 150 << " row " << i % 150 << ": " << left[i];
               }
               EXPECT_EQ(text_of(run(handle)), success);
               EXPECT_TRUE(same(lines_of(handle), expected));
             }}
        .play();
  }
}

/// A text is whole or null.
TEST_F(ExhaustionTest, OfAReading) {
  for (const auto read :
       {read_average, +[](int64_t handle) { return get_shapes(handle, nullptr); },
        +[](int64_t handle) { return get_invoke_functions(handle, nullptr); },
        +[](int64_t handle) { return get_parser_variable_fields(handle, nullptr); }}) {
    std::string whole;
    whole.reserve(4000);
    Play{.prepare =
             [&](int64_t handle) {
               expect_works(handle);
               if (whole.empty()) whole = text_of(read(handle));
             },
         .attempt = read,
         .recover =
             [&](int64_t handle, const std::string& answer) {
               EXPECT_TRUE(answer.empty() || answer == whole) << answer;
               EXPECT_EQ(text_of(read(handle)), whole);
             }}
        .play();
  }
}

TEST_F(ExhaustionTest, OfADeclaration) {
  constexpr std::string_view user = "A:FIELDOFAHOST*2;";
  constexpr std::string_view row = R"([{"1":20240102000000,"4711":21}])";
  const auto declare = [](int64_t handle) {
    create_reserved_field(handle, "FIELDOFAHOST", 4711, 12);
    return static_cast<char*>(nullptr);
  };
  Play{.attempt = declare,
       .recover =
           [&](int64_t handle, const std::string&) {
             declare(handle);
             const std::string report = text_of(
                 get_pre_parse_res(handle, user.data(), "", "", size_of(user), 0, 0, nullptr));
             EXPECT_TRUE(tells(report, 0)) << report;
             set_row_data(handle, row.data(), size_of(row));
             text_of(run(handle));
             const int32_t id = get_field_id_by_param_name(handle, "A", 1);
             EXPECT_EQ(get_data_by_col_row(handle, 0, static_cast<uint32_t>(id)), 42.0);
           },
       .process_keeps = true}
      .play();
}

/// Not one piece of memory more after many sessions.
TEST_F(ExhaustionTest, NoSessionLeavesAnything) {
  const auto session = [] {
    const TestHost host;
    expect_works(host.handle());
    text_of(compile(host.handle()));
  };
  session();
  const long live = live_allocations();
  for (int i = 0; i < 200; ++i) session();
  EXPECT_EQ(live_allocations(), live);
}

}  // namespace
}  // namespace quor_test
