// Rows and columns, through the C interface: keys, intake of rows in any order, single cells,
// reads.
#include <gtest/gtest.h>
#include <simdjson.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>

#include "support/test_host.h"

namespace quor_test {
namespace {

/// Columns 11, 7 and 1 of a script that reads C and O.
class DataTable : public testing::Test {
 protected:
  void SetUp() override {
    clear_events();
    ASSERT_EQ(host_.compile("A:=C+O;").code, 0);
  }
  int64_t handle() const { return host_.handle(); }
  TestHost host_;
};

TEST_F(DataTable, TakesRowsInAnyOrderUnderAscendingKeys) {
  host_.feed_json(R"([{"1":30,"11":3},{"11":1,"1":10,"7":0.5},{"1":20,"11":2,"999":5}])");
  EXPECT_EQ(to_text(host_.column(1)), "10 20 30");
  EXPECT_EQ(to_text(host_.column(11)), "1 2 3");
  EXPECT_EQ(to_text(host_.column(7)), "0.5 null null");
  host_.feed_json(R"([{"1":25,"11":2.5},{"1":5,"11":0}])");
  EXPECT_EQ(to_text(host_.column(1)), "5 10 20 25 30");
  EXPECT_EQ(to_text(host_.column(11)), "0 1 2 2.5 3");
  // Known keys with new ones behind them, in the middle and at the end.
  host_.feed_json(R"([{"1":10,"11":4},{"1":15,"11":5},{"1":30,"11":6},{"1":40,"11":7}])");
  EXPECT_EQ(to_text(host_.column(1)), "5 10 15 20 25 30 40");
  EXPECT_EQ(to_text(host_.column(11)), "0 4 5 2 2.5 6 7");
  EXPECT_EQ(get_current_row_index(handle(), 25), 4U);
  EXPECT_EQ(get_current_row_index(handle(), 26), 0xFFFFFFFFU);
}

TEST_F(DataTable, AKnownKeyReplacesTheNeededFieldsOnly) {
  host_.feed_json(R"([{"1":10,"11":1,"7":1}])");
  set_column_data(handle(), 10, 777, 4.0);
  host_.feed_json(R"([{"1":10,"11":2}])");
  EXPECT_EQ(to_text(host_.column(11)), "2");
  EXPECT_EQ(to_text(host_.column(7)), "null");
  EXPECT_EQ(to_text(host_.column(777)), "4");
}

TEST_F(DataTable, OfEqualKeysInOneTextTheLastWinsWhole) {
  host_.feed_json(R"([{"1":10,"11":1,"7":1},{"1":5,"11":9},{"1":10,"11":2},{"1":10,"1":7,"7":3}])");
  EXPECT_EQ(to_text(host_.column(1)), "5 10");
  EXPECT_EQ(to_text(host_.column(11)), "9 null");
  EXPECT_EQ(to_text(host_.column(7)), "null 3");
}

TEST_F(DataTable, ABadElementEndsTheIntakeAndKeepsWhatCameBefore) {
  for (const char* bad : {R"("x")", R"({"11":1})", R"({"1":"30"})", R"({"1":1.5})",
                          R"({"1":18446744073709551615})"}) {
    clear_data(handle());
    host_.feed_json(std::string(R"([{"1":20,"11":2},{"1":0,"11":9},{"1":-4},{"1":10,"11":1},)") +
                    bad + R"(,{"1":40,"11":4}])");
    EXPECT_EQ(to_text(host_.column(11)), "1 2") << bad;
  }
  EXPECT_TRUE(events().log.empty());
}

TEST_F(DataTable, MarksAndWrongTypesAreNull) {
  host_.feed_json(
      R"([{"1":1,"11":4294967295},{"1":2,"11":2147483648.0},{"1":3,"11":4294967295.5},
          {"1":4,"11":"5"},{"1":5,"11":null},{"1":6,"11":-1},{"1":7,"11":18446744073709551615}])");
  EXPECT_EQ(to_text(host_.column(11)), "null null 4294967295.5 null null -1 18446744073709551616");
}

TEST_F(DataTable, FaultsOfTheTextAreLogged) {
  set_parser_instance_uuid(handle(), 42);
  host_.feed_json("[{\"1\":10,\"11\":1}");
  host_.feed_json("{}");
  host_.feed_json("[\"\xFF\"]");
  host_.feed_json("\xEF\xBB\xBF[]");
  host_.feed_json("");
  host_.feed_json("[]");
  const std::vector<LogLine>& log = events().log;
  ASSERT_EQ(log.size(), 5U);
  const std::string parse_error = "[ScriptParser::add_row] data_arr json parse error.";
  const std::string not_utf8 = "[ScriptParser::add_row] data_arr is not utf-8 string.";
  for (size_t i = 0; i < log.size(); ++i) {
    EXPECT_EQ(log[i].text, i == 2 ? not_utf8 : parse_error);
    EXPECT_EQ(log[i].level, 2);
    EXPECT_EQ(log[i].uuid, 42U);
  }
  EXPECT_EQ(get_row_num(handle()), 0U);
  clear_events(3);
  host_.feed_json("{}");
  EXPECT_TRUE(events().log.empty()) << "less than what is logged";
}

TEST_F(DataTable, SingleCells) {
  set_column_data(handle(), 1, 11, 1.5);
  EXPECT_EQ(to_text(host_.column(11)), "null");
  set_column_data(handle(), 1, 11, 1.5);
  set_column_data(handle(), 1, 4711, 2.5);
  set_column_data(handle(), 0, 11, 3.5);
  set_column_data(handle(), 1, 0xFFFFFFFF, 3.5);
  EXPECT_EQ(to_text(host_.column(11)), "1.5");
  EXPECT_EQ(to_text(host_.column(4711)), "2.5");
  EXPECT_EQ(to_text(host_.column(1)), "1");
  EXPECT_EQ(get_row_num(handle()), 1U);
  EXPECT_TRUE(get_data_by_col_row(handle(), 0, 0xFFFFFFFF) !=
              get_data_by_col_row(handle(), 0, 0xFFFFFFFF));
  const uint32_t columns = get_column_num(handle());
  clear_data(handle());
  EXPECT_EQ(get_row_num(handle()), 0U);
  EXPECT_EQ(get_column_num(handle()), columns);
}

TEST_F(DataTable, ReadsWindowsAsText) {
  EXPECT_EQ(host_.data_text(11, 0, 5), R"({"count":1,"data":[null]})");
  host_.feed({{"C", series("10 null 12.5")}});
  EXPECT_EQ(host_.data_text(11, 2, 3), R"({"count":3,"data":[10.000000,null,12.500000]})");
  EXPECT_EQ(host_.data_text(11, 2, 2), R"({"count":2,"data":[null,12.500000]})");
  EXPECT_EQ(host_.data_text(11, 1, 100), R"({"count":2,"data":[10.000000,null]})");
  EXPECT_EQ(host_.data_text(11, 4, 3), R"({"count":3,"data":[12.500000,null,null]})");
  EXPECT_EQ(host_.data_text(12345, 1, 2), R"({"count":2,"data":[null,null]})");
  const std::string none = R"({"count":0,"data":[]})";
  for (const int32_t count : {0, -1, -2, -2147483647})
    EXPECT_EQ(host_.data_text(11, 2, count), none);
  EXPECT_EQ(host_.data_text(11, 0xFFFFFFFF, 3), none);
  EXPECT_EQ(host_.data_text(11, 0xFFFFFFFF, INT32_MIN), none);
  EXPECT_EQ(host_.data_text(11, 1, INT32_MIN), R"({"count":2,"data":[10.000000,null]})");
}

/// Memory that held results of other rows shows none of them.
TEST_F(DataTable, NewRowsHaveNoResults) {
  ASSERT_EQ(host_.compile("A:MA(C,2);B:7;").code, 0);
  const auto feeds = [this] { host_.feed({{"C", Series(3, 5)}}); };
  const auto puts_cells = [this] {
    for (const int key : {1, 2, 3}) set_column_data(handle(), key, 11, 5);
  };
  const std::function<void()> ways[] = {feeds, puts_cells};
  for (const auto& way : ways) {
    for (const bool as_text : {false, true}) {
      clear_data(handle());
      host_.feed({{"C", Series(100, 5)}});
      EXPECT_EQ(host_.run(), success);
      const uint32_t end = 20000 + get_column_num(handle());
      clear_data(handle());
      way();
      for (uint32_t id = 20000; id < end; ++id) {
        EXPECT_EQ(as_text ? host_.data_text(id, 2, 3) : to_text(host_.column(id)),
                  as_text ? R"({"count":3,"data":[null,null,null]})" : "null null null");
      }
    }
  }
}

/// Random texts, short ones and a few long ones, against a map that takes one row after the other.
TEST_F(DataTable, MergesLikeRowByRow) {
  std::mt19937 random(7);
  std::map<int64_t, double> rows;
  for (int text = 0; text < 60; ++text) {
    std::string json = "[";
    const auto count = random() % (text % 20 == 19 ? 1000U : 12U);
    for (unsigned i = 0; i < count; ++i) {
      const auto key = static_cast<int64_t>(random() % 400) * 10'000'000'019;
      const double value = static_cast<double>(random() % 1000) / 8.0;
      if (key >= 1) rows[key] = value;
      json += (i > 0 ? ",{\"1\":" : "{\"1\":") + std::to_string(key) +
              ",\"11\":" + std::to_string(value) + "}";
    }
    host_.feed_json(json + "]");
    Series keys;
    Series values;
    for (const auto& [key, value] : rows) {
      keys.push_back(static_cast<double>(key));
      values.push_back(value);
    }
    ASSERT_TRUE(same(host_.column(1), keys)) << json;
    ASSERT_TRUE(same(host_.column(11), values)) << json;
  }
}

// Reading JSON is what takes long in the intake, so the library holds a kernel for each kind of
// processor and takes the best that this one can run.
TEST(JsonKernels, TheBestOfTheProcessorIsTaken) {
  std::vector<std::string> runnable;
  for (const simdjson::implementation* kernel : simdjson::get_available_implementations()) {
    if (kernel->supported_by_runtime_system()) runnable.push_back(kernel->name());
  }
  ASSERT_FALSE(runnable.empty());
#ifdef __x86_64__
  EXPECT_EQ(simdjson::get_available_implementations().size(), 4U);
#endif
  simdjson::dom::parser parser;
  ASSERT_EQ(parser.parse("[1]", 3).error(), simdjson::SUCCESS);
  EXPECT_EQ(simdjson::get_active_implementation()->name(), runnable.front());
}

}  // namespace
}  // namespace quor_test
