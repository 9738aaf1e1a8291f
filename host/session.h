// One instance of the library for the life of an object, and what the program answers to it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quor_host {

/// What the instance is about.
struct Subject {
  uint32_t period = 0x4000;
  std::string security;
  std::string market;
  std::string time_zone = "UTC+08:00";
};

/// What the library may ask for. It has no other place to keep these than the process.
struct Answers {
  std::map<std::string, double> market_constants;  ///< by key, "MINPRICE" and the like
  bool is_trading = false;
  std::string calendar;  ///< the trading calendar's JSON; empty for none
};

class Session {
 public:
  Session(const Subject& subject, Answers answers);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Subject& subject() const { return subject_; }

  /// Each gives the text that the library answers.
  std::string compile(std::string_view script, std::string_view parameters,
                      std::string_view lines) const;
  std::string calculate(uint32_t first_row, bool fire_signals) const;
  std::string functions() const;
  std::string shapes() const;

  void feed(std::string_view rows_json) const;
  void set_cell(int64_t row_key, uint32_t column, double value) const;
  uint32_t row_count() const;
  /// The column of a line, by its name in capitals.
  std::optional<uint32_t> column_of(std::string_view name) const;
  double cell(uint32_t row, uint32_t column) const;

 private:
  Subject subject_;
  int64_t handle_;
};

}  // namespace quor_host
