#include "session.h"

#include <iostream>
#include <limits>
#include <utility>

#include "errors.h"
#include "quor_parser.h"

namespace quor_host {
namespace {

Answers& current_answers() {
  static Answers answers;
  return answers;
}

void show_log_line(uint8_t level, const char* text, uint64_t /*uuid*/) {
  std::cerr << "quor: log " << int{level} << ": " << text << '\n';
}

double answer_market_constant(const char* key, const char* /*market*/, const char* /*security*/) {
  const auto& constants = current_answers().market_constants;
  const auto row = constants.find(key);
  return row == constants.end() ? std::numeric_limits<double>::quiet_NaN() : row->second;
}

int32_t answer_trading(int64_t /*time*/, const char* /*market*/, const char* /*security*/) {
  return current_answers().is_trading ? 1 : 0;
}

const char* answer_trade_dates(const char* /*market*/, const char* /*security*/,
                               const char* /*start*/, const char* /*end*/, int32_t* /*length*/) {
  return current_answers().calendar.c_str();
}

uint32_t size_of(std::string_view text) {
  if (text.size() > std::numeric_limits<uint32_t>::max()) {
    throw HostError("a text is longer than 4 GiB");
  }
  return static_cast<uint32_t>(text.size());
}

/// The interface takes a null pointer for a missing text, and an empty view may have one.
const char* data_of(std::string_view text) { return text.empty() ? "" : text.data(); }

/// Copies a buffer of the library and gives it back.
std::string take_text(char* buffer, uint32_t length) {
  if (buffer == nullptr) throw HostError("the library gave no answer");
  std::string text(buffer, length);
  release_ptr_val(buffer);
  return text;
}

}  // namespace

Session::Session(const Subject& subject, Answers answers)
    : subject_(subject), handle_(create_instance()) {
  if (handle_ == 0) throw HostError("the library has no memory for an instance");
  current_answers() = std::move(answers);
  // Without a security there is no calendar to complain of.
  constexpr uint8_t errors_and_calendar = 1;
  constexpr uint8_t errors = 2;
  const bool has_calendar = !subject.security.empty() && !subject.market.empty();
  set_logger_handler(show_log_line, has_calendar ? errors_and_calendar : errors);
  set_get_extra_data_callback(handle_, answer_market_constant);
  set_get_trade_time_callback(handle_, answer_trading);
  set_get_trade_dates_callback(answer_trade_dates);
  set_indicator_extra_info(handle_, subject.period, subject.security.c_str(),
                           subject.market.c_str(), "", subject.time_zone.c_str(),
                           size_of(subject.security), size_of(subject.market), 0,
                           size_of(subject.time_zone));
}

Session::~Session() { delete_instance(handle_); }

std::string Session::compile(std::string_view script, std::string_view parameters,
                             std::string_view lines) const {
  uint32_t length = 0;
  char* const report =
      get_pre_parse_res(handle_, data_of(script), data_of(parameters), data_of(lines),
                        size_of(script), size_of(parameters), size_of(lines), &length);
  return take_text(report, length);
}

std::string Session::calculate(uint32_t first_row, bool fire_signals) const {
  uint32_t length = 0;
  char* const answer = exec_parser_cal(handle_, first_row, fire_signals ? 1 : 0, &length);
  return take_text(answer, length);
}

std::string Session::functions() const {
  uint32_t length = 0;
  char* const words = get_invoke_functions(handle_, &length);
  return take_text(words, length);
}

std::string Session::shapes() const {
  uint32_t length = 0;
  char* const records = get_shapes(handle_, &length);
  return take_text(records, length);
}

void Session::feed(std::string_view rows_json) const {
  set_row_data(handle_, data_of(rows_json), size_of(rows_json));
}

void Session::set_cell(int64_t row_key, uint32_t column, double value) const {
  set_column_data(handle_, static_cast<uint64_t>(row_key), column, value);
}

uint32_t Session::row_count() const { return get_row_num(handle_); }

std::optional<uint32_t> Session::column_of(std::string_view name) const {
  const int32_t id = get_field_id_by_param_name(handle_, data_of(name), size_of(name));
  if (id < 0) return std::nullopt;
  return static_cast<uint32_t>(id);
}

double Session::cell(uint32_t row, uint32_t column) const {
  return get_data_by_col_row(handle_, static_cast<int32_t>(row), column);
}

}  // namespace quor_host
