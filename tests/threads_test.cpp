// Many host threads at once, each with instances of its own and all with one shared, while fields
// are declared, calendars loaded and callbacks fire. To be run under the thread sanitizer, too.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr int thread_count = 8;

void on_threads(const std::function<void(int number)>& work) {
  std::vector<std::thread> threads;
  for (int number = 0; number < thread_count; ++number) threads.emplace_back(work, number);
  for (std::thread& thread : threads) thread.join();
}

std::atomic<int> notices;
std::atomic<int> signals;
std::atomic<int> calendars;
std::atomic<int> log_lines;

/// Makes, uses and ends an instance while another one works.
void play_along() {
  const TestHost inner;
  EXPECT_EQ(get_row_num(inner.handle()), 0U);
}

const char* answer_trade_dates(const char*, const char* security, const char*, const char*,
                               int32_t*) {
  ++calendars;
  return security[0] == 'F'
             ? R"({"status_code":0,"data":{"timezone":"UTC+08:00",)"
               R"("trade_dates":["20240109","20240108","20240105"],"daylight_save_times":[],)"
               R"("trade_times":[{"start_date":"20240101","end_date":"20241231","times":[)"
               R"({"start_time":"09:00:00","end_time":"15:00:00","offset":"0",)"
               R"("trans_day_type":"1","type":"continuous"}]}],"special_trade_times":[]}})"
             : "";
}

class ThreadsTest : public testing::Test {
 protected:
  void SetUp() override {
    notices = signals = calendars = log_lines = 0;
    set_handlers();
  }

  static void set_handlers() {
    set_logger_handler([](uint8_t, const char* text, uint64_t) { log_lines += *text != '\0'; }, 0);
    set_parser_notice_callback_handler([](int64_t, uint32_t, uint64_t, const char*) {
      play_along();
      ++notices;
    });
    set_trade_callback([](int64_t, int64_t, uint32_t, uint64_t, uint32_t, uint32_t action,
                          int64_t quantity) { signals += action == 0 && quantity == 2; });
    set_get_trade_dates_callback(answer_trade_dates);
  }
};

/// Closes that count up from ten times the thread's number, which tells a mixed-up result.
Bars bars_of(int number, size_t rows) {
  Bars bars;
  for (size_t row = 0; row < rows; ++row)
    bars["C"].push_back(10.0 * number + static_cast<double>(row));
  return bars;
}

TEST_F(ThreadsTest, InstancesSideBySide) {
  constexpr int rounds = 15;
  on_threads([](int number) {
    for (int round = 0; round < rounds; ++round) {
      TestHost host;
      const std::string field = new_word("OFTHREAD");
      host.declare_field(field, 5000);
      const Report report =
          host.compile("M:MA(C,2);F:" + field + ";\nC>REF(C,1),NOTICE('up');\nISLASTBAR,BK(2);\n");
      EXPECT_EQ(report.code, 0) << report.text;
      host.feed(bars_of(number, 4));
      set_column_data(host.handle(), static_cast<uint64_t>(host.key_of(3)), 5000, number);
      EXPECT_EQ(host.run(0, true), success);
      const double close = 10.0 * number;
      EXPECT_TRUE(same(host.line("M"), {null, close + 0.5, close + 1.5, close + 2.5}));
      EXPECT_TRUE(same(host.line("F"), {null, null, null, static_cast<double>(number)}));
    }
  });
  // The close rises from the second bar on: one run, one notice.
  EXPECT_EQ(notices, rounds * thread_count);
  EXPECT_EQ(signals, rounds * thread_count);
}

/// Every thread feeds bars of its own keys, runs and reads; whoever comes last sees all of them.
TEST_F(ThreadsTest, OneInstanceForAll) {
  constexpr size_t rows = 20;
  TestHost host;
  ASSERT_EQ(host.compile("S:SUM(C,0);").code, 0);
  std::atomic<int> whole_texts = 0;
  on_threads([&](int number) {
    for (size_t row = 0; row < rows; ++row) {
      const std::string key =
          std::to_string(20240101000000 + 100 * row + static_cast<size_t>(number));
      host.feed_json("[{\"1\":" + key + ",\"11\":1}]");
      EXPECT_EQ(host.run(0), success);
      const uint32_t place = get_current_row_index(host.handle(), std::stoull(key));
      EXPECT_GE(place, row);
      whole_texts += host.data_text(11, get_row_num(host.handle()) - 1, 3).ends_with("]}");
      get_field_val_by_index(host.handle(), 20000, 0);
      EXPECT_EQ(host.shapes().front(), '[');
    }
  });
  EXPECT_EQ(whole_texts, static_cast<int>(rows) * thread_count);
  EXPECT_EQ(host.run(0), success);
  Series sums;
  for (size_t row = 0; row < rows * thread_count; ++row) {
    sums.push_back(static_cast<double>(row) + 1);
  }
  EXPECT_EQ(to_text(host.line("S")), to_text(sums));
}

/// A deletion waits for the call that works; then every call finds the handle dead.
TEST_F(ThreadsTest, DeletionsWhileOthersCall) {
  for (int round = 0; round < 20; ++round) {
    const int64_t handle = create_instance();
    std::atomic<int> dead_answers = 0;
    on_threads([&](int number) {
      if (number == 0) {
        delete_instance(handle);
        dead_answers += get_column_num(handle) == 0;
        return;
      }
      char* report = get_pre_parse_res(handle, "A:MA(C,2);", "", "", 10, 0, 0, nullptr);
      release_ptr_val(report);
      release_ptr_val(exec_parser_cal(handle, 0, 0, nullptr));
      set_column_data(handle, 20240102000000, 11, 1.0);
      get_data_by_col_row(handle, 0, 11);
    });
    EXPECT_EQ(dead_answers, 1);
    EXPECT_EQ(get_row_num(handle), 0U);
  }
}

TEST_F(ThreadsTest, CalendarsOfOneAndOfManySecurities) {
  const std::string prefix = new_word("F") + "_";
  on_threads([&prefix](int number) {
    for (int round = 0; round < 10; ++round) {
      const bool shares = round % 2 == 0;
      const std::string security =
          prefix + (shares ? "SHARED" : std::to_string(number) + "_" + std::to_string(round));
      TestHost host;
      host.set_info(0x3001, security, "THREADS");
      EXPECT_EQ(host.compile("D:DATE;").code, 0);
      // A bar behind the last session of a Friday belongs to the Monday.
      host.set_keys({20240105140000, 20240105160000});
      host.feed({{"C", {1, 2}}});
      EXPECT_EQ(host.run(), success);
      EXPECT_EQ(to_text(host.line("D")), "20240105 20240108");
    }
  });
  EXPECT_GE(calendars, 1 + 5 * thread_count);
}

TEST_F(ThreadsTest, HandlersChangeWhileTheyFire) {
  std::atomic<bool> done = false;
  std::thread changer([&done] {
    while (!done) {
      set_handlers();
      std::this_thread::yield();
    }
  });
  on_threads([](int number) {
    TestHost host;
    host.compile("C>0,BK(2);");
    for (int round = 0; round < 20; ++round) {
      host.feed(bars_of(number + 1, 3));
      EXPECT_EQ(host.run(0, true), success);
      host.feed_json("no JSON");
    }
  });
  done = true;
  changer.join();
  EXPECT_EQ(signals, 3 * 20 * thread_count);
  EXPECT_EQ(log_lines, 20 * thread_count);
}

}  // namespace
}  // namespace quor_test
