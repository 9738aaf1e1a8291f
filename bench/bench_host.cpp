#include "bench_host.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <random>
#include <vector>

#include "quor_parser.h"

namespace quor_bench {
namespace {

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

void expect_success(char* answer) {
  const std::string text = answer == nullptr ? "no answer" : answer;
  release_ptr_val(answer);
  if (text.find("\"ErrCode\":0,") != std::string::npos) return;
  std::cerr << text << '\n';
  std::exit(1);
}

/// 240 minutes a day, 28 days a month, so that every key is a date.
int64_t key_of(size_t row) {
  const auto minute = static_cast<int64_t>(row % 240);
  const auto day = static_cast<int64_t>(row / 240);
  const int64_t date = (2000 + day / 336) * 10000 + (day / 28 % 12 + 1) * 100 + day % 28 + 1;
  return date * 1000000 + (10 + minute / 60) * 10000 + minute % 60 * 100;
}

void append_price(std::string& text, const char* key, double price) {
  char digits[32];
  const auto end =
      std::to_chars(digits, digits + sizeof digits, price, std::chars_format::fixed, 2).ptr;
  text += key;
  text.append(digits, end);
}

/// The bar and the close that the next one starts from.
std::string make_bar(size_t row, std::mt19937_64& random, double& close) {
  const auto step = [&random] { return static_cast<double>(random() % 100) / 100.0; };
  const double open = close;
  close = std::max(10.0, open + step() - step());
  std::string text = "{\"1\":" + std::to_string(key_of(row));
  append_price(text, ",\"7\":", open);
  append_price(text, ",\"8\":", std::max(open, close) + step());
  append_price(text, ",\"9\":", std::min(open, close) - step());
  append_price(text, ",\"11\":", close);
  text += ",\"13\":" + std::to_string(100 + random() % 100000) + '}';
  return text;
}

}  // namespace

BenchHost::BenchHost() : handle_(create_instance()) {}
BenchHost::~BenchHost() { delete_instance(handle_); }

void BenchHost::compile(std::string_view script) const {
  uint32_t length = 0;
  expect_success(get_pre_parse_res(handle_, script.data(), "", "", size_of(script), 0, 0, &length));
}

void BenchHost::feed(std::string_view rows) const {
  set_row_data(handle_, rows.data(), size_of(rows));
}

void BenchHost::calculate(uint32_t first_row) const {
  uint32_t length = 0;
  expect_success(exec_parser_cal(handle_, first_row, 0, &length));
}

void BenchHost::calculate_unread(uint32_t first_row) const {
  uint32_t length = 0;
  release_ptr_val(exec_parser_cal(handle_, first_row, 0, &length));
}

void BenchHost::touch(uint32_t row) const {
  constexpr int32_t keys = 1;
  constexpr uint32_t first_result = 20000;
  const auto key = static_cast<uint64_t>(value(row, keys));
  set_column_data(handle_, key, first_result, value(row, first_result) == 1 ? 2 : 1);
}

void BenchHost::clear() const { clear_data(handle_); }

uint32_t BenchHost::row_count() const { return get_row_num(handle_); }

uint32_t BenchHost::column_count() const { return get_column_num(handle_); }

int32_t BenchHost::column_of(std::string_view line) const {
  return get_field_id_by_param_name(handle_, line.data(), size_of(line));
}

double BenchHost::value(uint32_t row, int32_t column) const {
  return get_data_by_col_row(handle_, static_cast<int32_t>(row), static_cast<uint32_t>(column));
}

size_t BenchHost::text_size(int32_t column) const {
  uint32_t length = 0;
  const uint32_t rows = row_count();
  char* text = get_data_arr(handle_, static_cast<uint32_t>(column), rows - 1,
                            static_cast<int32_t>(rows), &length);
  if (text == nullptr) std::exit(1);
  release_ptr_val(text);
  return length;
}

Bars bars_of(const BenchHost& host) {
  Bars bars;
  const auto read = [&host](int32_t column) {
    Series values(host.row_count());
    for (uint32_t row = 0; row < host.row_count(); ++row) values[row] = host.value(row, column);
    return values;
  };
  bars.open = read(7);
  bars.high = read(8);
  bars.low = read(9);
  bars.close = read(11);
  bars.volume = read(13);
  return bars;
}

std::string random_walk(size_t first, size_t last, Order order) {
  std::mt19937_64 random(1);
  double close = 100.0;
  std::vector<std::string> bars;
  for (size_t row = 0; row < last; ++row) {
    std::string bar = make_bar(row, random, close);
    if (row >= first) bars.push_back(std::move(bar));
  }
  if (order == Order::descending) std::ranges::reverse(bars);
  if (order == Order::shuffled) std::ranges::shuffle(bars, random);
  std::string text = "[";
  for (const std::string& bar : bars) text += (text.size() > 1 ? "," : "") + bar;
  return text + ']';
}

}  // namespace quor_bench
