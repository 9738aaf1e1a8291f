#include "fuzz_host.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

namespace quor_fuzz {
namespace {

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

/// A view without characters may point nowhere; the interface takes null for a missing text.
const char* data_of(std::string_view text) { return text.empty() ? "" : text.data(); }

/// Reads a text that the library hands out to its end.
void read(const char* text) { expect(std::strlen(text) < 100'000'000, "a callback's text"); }

void hear_log(uint8_t, const char* text, uint64_t) { read(text); }
void hear_notice(int64_t, uint32_t, uint64_t, const char* text) { read(text); }
void hear_signal(int64_t, int64_t, uint32_t, uint64_t, uint32_t, uint32_t action, int64_t) {
  expect(action <= 6, "a trade signal's action");
}

std::string bar_json(size_t row) {
  const auto wave = static_cast<int>(row * 7 % 5);
  std::string json = "{\"1\":" + std::to_string(20240102093000 + row * 1000000);
  if (row != 2) json += ",\"11\":" + std::to_string(10 + wave);
  json += ",\"7\":" + std::to_string(12 - wave) + ",\"8\":" + std::to_string(13 + wave);
  json += ",\"9\":8.5,\"13\":" + std::to_string(row % 3 * 1000) + ",\"19\":1e9,\"12\":77";
  for (int id = 20000; id < 20004; ++id) json += ",\"" + std::to_string(id) + "\":1.25";
  return json + "}";
}

}  // namespace

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Not as promised: %s\n", what);
  std::abort();
}

std::string take_text(char* buffer, uint32_t length) {
  if (buffer == nullptr) return {};
  expect(buffer[length] == '\0', "the terminator of a text");
  std::string text(buffer, length);
  release_ptr_val(buffer);
  return text;
}

std::vector<std::string_view> parts_of(std::string_view input) {
  std::vector<std::string_view> parts;
  for (;;) {
    const size_t mark = input.find(part_mark);
    parts.push_back(input.substr(0, mark));
    if (mark == std::string_view::npos) return parts;
    input.remove_prefix(mark + 1);
  }
}

uint8_t Bytes::byte() {
  if (rest_.empty()) return 0;
  const auto value = static_cast<uint8_t>(rest_.front());
  rest_.remove_prefix(1);
  return value;
}

uint32_t Bytes::word() {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | byte();
  return value;
}

double Bytes::number() {
  static constexpr double numbers[] = {
      0.0,
      1.0,
      -1.0,
      2.5,
      1e-11,
      1e300,
      -1e300,
      4294967295.0,
      2147483648.0,
      std::numeric_limits<double>::infinity(),
      std::numeric_limits<double>::quiet_NaN(),
      std::numeric_limits<double>::denorm_min(),
  };
  const size_t choice = below(std::size(numbers) + 4);
  return choice < std::size(numbers) ? numbers[choice] : static_cast<double>(byte()) / 8;
}

std::string_view Bytes::text() {
  const size_t wanted = byte();
  const size_t length = std::min(wanted, rest_.size());
  const std::string_view text = rest_.substr(0, length);
  rest_.remove_prefix(length);
  return text;
}

size_t bearable_bars(std::string_view script) {
  size_t depth = 0;
  size_t deepest = 0;
  for (const char c : script) {
    if (c == '(') deepest = std::max(deepest, ++depth);
    if (c == ')' && depth > 0) --depth;
  }
  // A hidden name may stand for a call of any depth.
  const auto hidden_names = std::ranges::count(script, '~');
  if (hidden_names > 4) return 0;
  if (deepest <= 2 && hidden_names == 0) return 100;
  if (deepest <= 4) return 16;
  return deepest <= 12 ? 4 : 0;
}

Surroundings surroundings(size_t choice) {
  static constexpr Surroundings all[] = {
      {0x4000, "600000", "USHA"}, {0x3005, "IF2401", "CFFEX"}, {0x3001, "", ""},
      {0x3000, "X", "USZA"},      {0x7001, "1", "2"},          {0x310A, "IF2401", "CFFEX"},
  };
  return all[choice % std::size(all)];
}

void FuzzHost::set_info(const Surroundings& info) const {
  set_indicator_extra_info(handle_, info.period, info.security.data(), info.market.data(), "",
                           "UTC+08:00", size_of(info.security), size_of(info.market), 0, 9);
}

std::string FuzzHost::compile(std::string_view script, std::string_view parameters,
                              std::string_view lines) const {
  uint32_t length = 0;
  char* report = get_pre_parse_res(handle_, data_of(script), data_of(parameters), data_of(lines),
                                   size_of(script), size_of(parameters), size_of(lines), &length);
  expect(report != nullptr, "a report for every script");
  return take_text(report, length);
}

void FuzzHost::feed(std::string_view json) const {
  set_row_data(handle_, data_of(json), size_of(json));
}

void FuzzHost::feed_bars(size_t count) const {
  std::string json = "[";
  for (size_t row = 0; row < count; ++row) json += (row > 0 ? "," : "") + bar_json(row);
  feed(json + "]");
}

std::string FuzzHost::run(uint32_t first_row, bool fire_signals) const {
  uint32_t length = 0;
  char* answer = exec_parser_cal(handle_, first_row, fire_signals ? 1 : 0, &length);
  expect(answer != nullptr, "an answer for every run");
  std::string text = take_text(answer, length);
  expect(text.starts_with("{\"ErrCode\":"), "the form of an answer");
  return text;
}

std::string FuzzHost::shapes() const {
  uint32_t length = 0;
  char* text = get_shapes(handle_, &length);
  return take_text(text, length);
}

void FuzzHost::read_everything() const {
  uint32_t length = 0;
  expect(shapes().starts_with('['), "the form of the shapes");
  for (const auto read_list : {get_invoke_functions, get_parser_variable_fields}) {
    char* text = read_list(handle_, &length);
    expect(take_text(text, length).starts_with('['), "the form of a list");
  }
  for (int id = 30; id < 48; ++id) {
    get_field_val_by_index(handle_, ~id, 1);
    get_field_val_by_index(handle_, 19990 + id, 0);
  }
  get_field_val_by_index(handle_, 11, std::numeric_limits<int32_t>::max());
  get_field_id_by_param_name(handle_, "A", 1);
}

std::string FuzzHost::table() const {
  std::string text;
  uint32_t length = 0;
  const uint32_t last = get_row_num(handle_) - 1;
  for (const uint32_t id : {1U, 7U, 8U, 9U, 11U, 13U, 20000U, 20001U, 20002U}) {
    char* cells = get_data_arr(handle_, id, last, std::numeric_limits<int32_t>::min(), &length);
    text += take_text(cells, length);
  }
  return text;
}

void set_quiet_handlers() {
  set_logger_handler(hear_log, 0);
  set_parser_notice_callback_handler(hear_notice);
  set_trade_callback(hear_signal);
}

}  // namespace quor_fuzz
