// A host for tests: drives one instance over the C interface only.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "quor_parser.h"

namespace quor_test {

inline constexpr double null = -__builtin_nan("");

/// Values of one field, oldest bar first.
using Series = std::vector<double>;

/// Bars by field: the field's word (C, HIGH, VOL ...) or its id in decimal.
using Bars = std::map<std::string, Series>;

/// What get_pre_parse_res answered, taken apart.
struct Report {
  std::string text;
  int64_t code = -1;
  std::string message;
  int64_t line = -1;
  int64_t look_back = -1;
  std::vector<int64_t> fields;  ///< ascending
  std::vector<std::string> cross_security;
  std::vector<std::string> cross_period;
  std::vector<std::string> realtime;
  std::string needs_extra_data;
  std::string contains_notice;
  std::string needs_trade_day;
};

/// What the process-wide handlers received since the last `clear_events`, from any instance.
struct LogLine {
  int level;
  std::string text;
  uint64_t uuid;
};
struct Notice {
  int64_t time;
  uint32_t column_id;
  uint64_t uuid;
  std::string text;
};
struct Signal {
  int64_t time;
  int64_t bar;
  uint32_t row;
  uint64_t uuid;
  uint32_t column_id;
  uint32_t action;
  int64_t quantity;
};
struct Events {
  std::vector<LogLine> log;
  std::vector<Notice> notices;
  std::vector<Signal> signals;
};
Events& events();
/// Empties the record and sets the handlers, the log from a level on.
void clear_events(uint8_t minimum_level = 0);

/// The key of a row: of these keys, and without them 20240101000000 + row.
int64_t row_key(const std::vector<int64_t>& keys, size_t row);

/// An instance for the life of the object.
class TestHost {
 public:
  TestHost();
  ~TestHost();
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  int64_t handle() const { return handle_; }

  void set_info(uint32_t period, std::string_view security, std::string_view market,
                std::string_view time_zone = "UTC+08:00");
  void declare_field(std::string_view word, uint32_t id);
  Report compile(std::string_view script, std::string_view parameters = "",
                 std::string_view lines = "");

  /// Sends bars from row `first` up to but excluding `last` under the keys of `key_of`.
  void feed(const Bars& bars, size_t first = 0, size_t last = SIZE_MAX);
  void feed_json(std::string_view json);
  /// Keys of further `feed` calls.
  void set_keys(std::vector<int64_t> keys) { keys_ = std::move(keys); }
  int64_t key_of(size_t row) const { return row_key(keys_, row); }

  /// Calculates and gives the answer as text.
  std::string run(uint32_t first_row = 0, bool fire_signals = false);

  int32_t id_of(std::string_view line) const;
  /// All rows of a line or of a column.
  Series line(std::string_view name) const;
  Series column(uint32_t id) const;
  std::string shapes() const;
  std::string functions() const;
  std::string variable_fields() const;
  std::string data_text(uint32_t id, uint32_t last_row, int32_t count) const;

 private:
  int64_t handle_;
  std::vector<int64_t> keys_;
};

/// A word that nobody has used: what is declared or loaded stays for the process, and a test may be
/// repeated in it.
std::string new_word(const std::string& stem);

inline constexpr std::string_view success = R"({"ErrCode":0,"ExtraMsg":"","ErrLine":""})";

/// The row JSON that `feed` sends.
std::string rows_json(const Bars& bars, size_t first, size_t last,
                      const std::vector<int64_t>& keys);

/// Equal to the last bit, except that any null equals any null.
bool same(double a, double b);
bool same(const Series& a, const Series& b);
std::string to_text(const Series& series);

/// A series with nulls from a literal: "1 2.5 null 7/3".
Series series(std::string_view literal);

}  // namespace quor_test
