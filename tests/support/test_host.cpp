#include "support/test_host.h"

#include <simdjson.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <charconv>
#include <cstring>
#include <mutex>
#include <sstream>

#include "tables/field_table.h"

namespace quor_test {
namespace {

std::mutex events_lock;

void take_log(uint8_t level, const char* text, uint64_t uuid) {
  const std::lock_guard guard(events_lock);
  events().log.push_back({level, text, uuid});
}

void take_notice(int64_t time, uint32_t column_id, uint64_t uuid, const char* text) {
  const std::lock_guard guard(events_lock);
  events().notices.push_back({time, column_id, uuid, text});
}

void take_signal(int64_t time, int64_t bar, uint32_t row, uint64_t uuid, uint32_t column_id,
                 uint32_t action, int64_t quantity) {
  const std::lock_guard guard(events_lock);
  events().signals.push_back({time, bar, row, uuid, column_id, action, quantity});
}

/// Takes the text of a buffer and gives the buffer back.
std::string take_text(char* buffer, uint32_t length) {
  if (buffer == nullptr) return "(null)";
  std::string text(buffer, length);
  release_ptr_val(buffer);
  return text;
}

std::vector<std::string> texts_of(simdjson::dom::element list) {
  std::vector<std::string> texts;
  for (const auto entry : list.get_array()) texts.emplace_back(std::string_view(entry));
  return texts;
}

Report parse_report(std::string text) {
  Report report;
  report.text = std::move(text);
  simdjson::dom::parser parser;
  const simdjson::dom::element root = parser.parse(report.text);
  report.code = root["ErrCode"].get_int64();
  report.message = std::string_view(root["ExtraMsg"]);
  report.line = root["ErrLine"].get_int64();
  report.look_back = root["MaxPeriodCount"].get_int64();
  for (const auto id : root["ExtraKLineFieldList"].get_array()) {
    report.fields.push_back(id.get_int64());
  }
  std::ranges::sort(report.fields);
  report.cross_security = texts_of(root["CrossSecurityList"]);
  report.cross_period = texts_of(root["CrossPeriodList"]);
  report.realtime = texts_of(root["RealtimeFieldList"]);
  report.needs_extra_data = std::string_view(root["IsNeedRequestExtraData"]);
  report.contains_notice = std::string_view(root["IsContainsNoticeFunction"]);
  report.needs_trade_day = std::string_view(root["IsNeedRequestTradeDay"]);
  return report;
}

std::string field_key(const std::string& field) {
  const auto id = quor::reserved_field_id(field);
  return id ? std::to_string(*id) : field;
}

std::string number_text(double value) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

}  // namespace

Events& events() {
  static Events record;
  return record;
}

void clear_events(uint8_t minimum_level) {
  events() = {};
  set_logger_handler(take_log, minimum_level);
  set_parser_notice_callback_handler(take_notice);
  set_trade_callback(take_signal);
}

std::string new_word(const std::string& stem) {
  static std::atomic<int> count = 0;
  return stem + std::to_string(count++);
}

TestHost::TestHost() : handle_(create_instance()) {}
TestHost::~TestHost() { delete_instance(handle_); }

void TestHost::set_info(uint32_t period, std::string_view security, std::string_view market,
                        std::string_view time_zone) {
  set_indicator_extra_info(handle_, period, security.data(), market.data(), "", time_zone.data(),
                           size_of(security), size_of(market), 0, size_of(time_zone));
}

void TestHost::declare_field(std::string_view word, uint32_t id) {
  create_reserved_field(handle_, word.data(), id, size_of(word));
}

Report TestHost::compile(std::string_view script, std::string_view parameters,
                         std::string_view lines) {
  // A view without characters may point nowhere; the interface takes null for a missing text.
  const auto data = [](std::string_view text) { return text.empty() ? "" : text.data(); };
  uint32_t length = 0;
  char* buffer = get_pre_parse_res(handle_, data(script), data(parameters), data(lines),
                                   size_of(script), size_of(parameters), size_of(lines), &length);
  return parse_report(take_text(buffer, length));
}

int64_t row_key(const std::vector<int64_t>& keys, size_t row) {
  return row < keys.size() ? keys[row] : 20240101000000 + static_cast<int64_t>(row);
}

std::string rows_json(const Bars& bars, size_t first, size_t last,
                      const std::vector<int64_t>& keys) {
  std::string json = "[";
  for (size_t row = first; row < last; ++row) {
    if (json.size() > 1) json += ',';
    json += "{\"1\":" + std::to_string(keys[row]);
    for (const auto& [field, values] : bars) {
      if (row >= values.size() || values[row] != values[row]) continue;
      json += ",\"" + field_key(field) + "\":" + number_text(values[row]);
    }
    json += '}';
  }
  return json + "]";
}

void TestHost::feed(const Bars& bars, size_t first, size_t last) {
  size_t rows = 0;
  for (const auto& [field, values] : bars) rows = std::max(rows, values.size());
  std::vector<int64_t> keys;
  for (size_t row = 0; row < rows; ++row) keys.push_back(key_of(row));
  feed_json(rows_json(bars, first, std::min(last, rows), keys));
}

void TestHost::feed_json(std::string_view json) {
  set_row_data(handle_, json.data(), size_of(json));
}

std::string TestHost::run(uint32_t first_row, bool fire_signals) {
  uint32_t length = 0;
  char* buffer = exec_parser_cal(handle_, first_row, fire_signals ? 1 : 0, &length);
  return take_text(buffer, length);
}

int32_t TestHost::id_of(std::string_view line) const {
  return get_field_id_by_param_name(handle_, line.data(), size_of(line));
}

Series TestHost::line(std::string_view name) const {
  return column(static_cast<uint32_t>(id_of(name)));
}

Series TestHost::column(uint32_t id) const {
  Series values;
  for (uint32_t row = 0; row < get_row_num(handle_); ++row) {
    values.push_back(get_data_by_col_row(handle_, static_cast<int32_t>(row), id));
  }
  return values;
}

std::string TestHost::shapes() const {
  uint32_t length = 0;
  char* buffer = get_shapes(handle_, &length);
  return take_text(buffer, length);
}

std::string TestHost::functions() const {
  uint32_t length = 0;
  char* buffer = get_invoke_functions(handle_, &length);
  return take_text(buffer, length);
}

std::string TestHost::variable_fields() const {
  uint32_t length = 0;
  char* buffer = get_parser_variable_fields(handle_, &length);
  return take_text(buffer, length);
}

std::string TestHost::data_text(uint32_t id, uint32_t last_row, int32_t count) const {
  uint32_t length = 0;
  char* buffer = get_data_arr(handle_, id, last_row, count, &length);
  return take_text(buffer, length);
}

bool same(double a, double b) {
  if (a != a || b != b) return a != a && b != b;
  return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

bool same(const Series& a, const Series& b) {
  return std::ranges::equal(a, b, [](double x, double y) { return same(x, y); });
}

std::string to_text(const Series& values) {
  std::string text;
  for (const double value : values) {
    if (!text.empty()) text += ' ';
    text += value != value ? "null" : number_text(value);
  }
  return text;
}

Series series(std::string_view literal) {
  Series values;
  std::istringstream words{std::string(literal)};
  for (std::string word; words >> word;) {
    if (word == "null") {
      values.push_back(null);
      continue;
    }
    const size_t slash = word.find('/');
    const double number = std::strtod(word.c_str(), nullptr);
    values.push_back(slash == std::string::npos
                         ? number
                         : number / std::strtod(word.c_str() + slash + 1, nullptr));
  }
  return values;
}

}  // namespace quor_test
