// The gate of every call: bad handles, null pointers, buffers, and the order of calls.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

bool is_nan(double value) { return value != value; }

/// Every call with a handle that names nothing.
void expect_gate_results(int64_t handle) {
  uint32_t length = 77;
  EXPECT_EQ(exec_parser_cal(handle, 0, 0, &length), nullptr);
  EXPECT_EQ(length, 77U) << "left unwritten";
  EXPECT_EQ(get_pre_parse_res(handle, "A:1;", "", "", 4, 0, 0, &length), nullptr);
  EXPECT_EQ(length, 0U);
  length = 77;
  EXPECT_EQ(get_pre_parse_res(handle, nullptr, "", "", 0, 0, 0, &length), nullptr);
  EXPECT_EQ(length, 0U);
  for (const auto read : {get_invoke_functions, get_parser_variable_fields, get_shapes}) {
    length = 77;
    EXPECT_EQ(read(handle, &length), nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(read(handle, nullptr), nullptr);
  }
  length = 77;
  EXPECT_EQ(get_data_arr(handle, 11, 0, 1, &length), nullptr);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(get_row_num(handle), 0U);
  EXPECT_EQ(get_column_num(handle), 0U);
  EXPECT_EQ(get_current_row_index(handle, 1), 0xFFFFFFFFU);
  EXPECT_TRUE(is_nan(get_data_by_col_row(handle, 0, 1)));
  EXPECT_TRUE(is_nan(get_field_val_by_index(handle, 1, 0)));
  EXPECT_EQ(get_field_id_by_param_name(handle, "A", 1), -1);
  create_reserved_field(handle, "GATE", 123456, 4);
  set_indicator_extra_info(handle, 0x3005, "S", "M", "", "UTC+08:00", 1, 1, 0, 9);
  set_parser_instance_uuid(handle, 1);
  set_get_extra_data_callback(handle, nullptr);
  set_get_trade_time_callback(handle, nullptr);
  set_row_data(handle, "[]", 2);
  set_column_data(handle, 1, 1, 1.0);
  clear_data(handle);
  delete_instance(handle);
}

TEST(Exports, BadHandles) {
  expect_gate_results(0);
  expect_gate_results(-1);
  expect_gate_results(INT64_MAX);
  const int64_t handle = create_instance();
  ASSERT_NE(handle, 0);
  delete_instance(handle);
  expect_gate_results(handle);
  delete_instance(handle);
}

TEST(Exports, NullPointersOfALiveInstance) {
  TestHost host;
  uint32_t length = 77;
  EXPECT_EQ(get_pre_parse_res(host.handle(), nullptr, "", "", 0, 0, 0, &length), nullptr);
  EXPECT_EQ(get_pre_parse_res(host.handle(), "", nullptr, "", 0, 0, 0, &length), nullptr);
  EXPECT_EQ(get_pre_parse_res(host.handle(), "", "", nullptr, 0, 0, 0, &length), nullptr);
  EXPECT_EQ(length, 77U) << "left unwritten";
  EXPECT_EQ(get_field_id_by_param_name(host.handle(), nullptr, 0), -1);
  create_reserved_field(host.handle(), nullptr, 5, 3);
  set_row_data(host.handle(), nullptr, 3);
  set_indicator_extra_info(host.handle(), 0x3005, nullptr, "M", "", "", 0, 1, 0, 0);
  char* text = exec_parser_cal(host.handle(), 0, 0, nullptr);
  EXPECT_STREQ(text, success.data());
  release_ptr_val(text);
  release_ptr_val(nullptr);
}

TEST(Exports, NullHandlersLeaveTheOthersInPlace) {
  clear_events();
  set_trade_callback(nullptr);
  set_get_trade_dates_callback(nullptr);
  set_parser_notice_callback_handler(nullptr);
  set_logger_handler(nullptr, 0);
  ASSERT_EQ(events().log.size(), 2U);
  EXPECT_EQ(events().log[0].text, "set_trade_callback callback is nullptr");
  EXPECT_EQ(events().log[1].text, "set_get_trade_dates_callback callback is nullptr");
  TestHost host;
  host.compile("C>0,NOTICE('x');C>0,BK;");
  host.feed({{"C", {1}}});
  host.run(0, true);
  EXPECT_EQ(events().notices.size() + events().signals.size(), 2U);
}

TEST(Exports, AnInstanceWithoutAScript) {
  TestHost host;
  EXPECT_EQ(host.run(), success);
  EXPECT_EQ(host.shapes(), "[]");
  EXPECT_EQ(host.functions(), "[]");
  EXPECT_EQ(host.variable_fields(), "[1]");
  EXPECT_EQ(get_row_num(host.handle()), 0U);
  EXPECT_EQ(get_column_num(host.handle()), 1U);
  EXPECT_EQ(host.id_of("CLOSE"), -1) << "only compiled variables are named";
}

std::string reentry_text;
int64_t reentry_handle = 0;

double call_back(const char*, const char*, const char*) {
  uint32_t length = 9;
  char* text = get_shapes(reentry_handle, &length);
  reentry_text = text == nullptr ? "refused" : text;
  release_ptr_val(text);
  delete_instance(reentry_handle);
  return 1.0;
}

int32_t call_back_for_time(int64_t, const char*, const char*) {
  call_back("", "", "");
  return 0;
}

/// Has the instance ask the callback in the middle of a compile.
void call_inside(TestHost& host, quor_trade_time_callback callback) {
  reentry_handle = host.handle();
  set_get_trade_time_callback(host.handle(), callback);
  EXPECT_EQ(host.compile("A:=SETTLE;").code, 0);
}

TEST(Exports, ACallbackThatCallsBackIsTurnedAway) {
  TestHost host;
  call_inside(host, call_back_for_time);
  EXPECT_EQ(reentry_text, "refused");
  EXPECT_EQ(host.run(), success) << "the instance lives";
}

/// What a call with a null text leaves in the length.
std::future<uint32_t> length_behind_null_text;

int32_t call_with_null_text(int64_t, const char*, const char*) {
  const auto call = [] {
    uint32_t length = 77;
    EXPECT_EQ(get_pre_parse_res(reentry_handle, nullptr, "", "", 0, 0, 0, &length), nullptr);
    return length;
  };
  EXPECT_EQ(call(), 77U) << "left unwritten";
  length_behind_null_text = std::async(std::launch::async, call);
  EXPECT_EQ(length_behind_null_text.wait_for(std::chrono::seconds(5)), std::future_status::ready);
  return 0;
}

TEST(Exports, ANullTextIsAnsweredWhileAnotherCallWorks) {
  TestHost host;
  call_inside(host, call_with_null_text);
  EXPECT_EQ(length_behind_null_text.get(), 77U);
}

}  // namespace
}  // namespace quor_test
