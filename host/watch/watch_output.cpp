#include "watch_output.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <string>
#include <utility>

#include "../input/bars.h"
#include "../output/console.h"
#include "../output/output.h"
#include "../text.h"

namespace quor_host {
namespace {

using quor::engine::Event;

/// Text that gathers until it is flushed. Dates are shown with their time from the first bar on
/// that has one.
class Gathering : public WatchOutput {
 public:
  void flush() override {
    if (!text_.empty()) std::cout << text_;
    text_.clear();
    std::cout.flush();
  }

 protected:
  std::string date_of(int64_t key) {
    with_time_ = with_time_ || have_times({&key, 1});
    return key_text(key, with_time_);
  }
  bool with_time() const { return with_time_; }

  std::string text_;

 private:
  bool with_time_ = false;
};

class CsvOutput : public Gathering {
 public:
  explicit CsvOutput(const std::vector<ShownLine>& lines) {
    text_ = "date";
    for (const ShownLine& line : lines) text_ += ',' + csv_cell(line.name);
    text_ += '\n';
  }

  void show(int64_t key, std::span<const double> values) override {
    text_ += date_of(key);
    for (const double value : values) {
      text_ += ',';
      append_csv_number(text_, value);
    }
    text_ += '\n';
  }

  void tell(const Event& event) override {
    flush();
    std::cerr << event_text(event, with_time()) << '\n';
  }
};

class JsonOutput : public Gathering {
 public:
  explicit JsonOutput(const std::vector<ShownLine>& lines) {
    for (const ShownLine& line : lines) names_.push_back(',' + json_string(line.name) + ':');
  }

  void show(int64_t key, std::span<const double> values) override {
    text_ += "{\"date\":\"" + date_of(key) + '"';
    for (size_t i = 0; i < values.size(); ++i) {
      text_ += names_[i];
      append_json_number(text_, values[i]);
    }
    text_ += "}\n";
  }

  void tell(const Event& event) override { text_ += event_json(event, with_time()) + '\n'; }

 private:
  std::vector<std::string> names_;
};

/// A table that grows. On a terminal a bar that changes does so in its line.
class TableOutput : public Gathering {
 public:
  explicit TableOutput(const std::vector<ShownLine>& lines) : on_terminal_(is_output_watched()) {
    for (const ShownLine& line : lines) columns_.push_back({line.name});
  }

  void learn(size_t line, std::span<const double> values) override {
    Column& column = columns_[line];
    column.decimals = decimals_to_show(values);
    for (const double value : values) {
      column.width = std::max(column.width, number_cell(value, column.decimals).size());
    }
  }

  void show(int64_t key, std::span<const double> values) override {
    std::string line = date_of(key);
    for (size_t i = 0; i < values.size(); ++i) {
      line += "  " + with_width(cell(columns_[i], values[i]), columns_[i].width, true);
    }
    if (!std::exchange(has_header_, true)) add_header();
    if (!on_terminal_) {
      text_ += line + '\n';
      return;
    }
    if (key != open_key_) close_line();
    open_key_ = key;
    open_line_ = std::move(line);
    is_open_ = true;
  }

  void tell(const Event& event) override {
    close_line();
    open_key_ = 0;
    text_ += event_text(event, with_time()) + '\n';
  }

  void flush() override {
    if (is_open_) text_ += "\r" + open_line_ + "\033[K";
    Gathering::flush();
  }

  void finish() override {
    close_line();
    Gathering::flush();
  }

 private:
  struct Column {
    std::string name;
    size_t width = 10;
    int decimals = 0;
  };

  static std::string cell(Column& column, double value) {
    column.decimals = std::max(column.decimals, decimals_to_show({&value, 1}));
    std::string text = number_cell(value, column.decimals);
    column.width = std::max(column.width, text.size());
    return text;
  }

  void add_header() {
    text_ += with_width("date", with_time() ? 19 : 10, false);
    for (const Column& column : columns_) {
      text_ += "  " + with_width(column.name, column.width, true);
    }
    text_ += '\n';
  }

  void close_line() {
    if (!std::exchange(is_open_, false)) return;
    text_ += "\r" + open_line_ + "\033[K\n";
  }

  bool on_terminal_;
  bool has_header_ = false;
  std::vector<Column> columns_;
  int64_t open_key_ = 0;
  std::string open_line_;
  bool is_open_ = false;  ///< the line of the last bar, which may be written over
};

}  // namespace

std::unique_ptr<WatchOutput> make_output(WatchForm form, const std::vector<ShownLine>& lines) {
  if (form == WatchForm::csv) return std::make_unique<CsvOutput>(lines);
  if (form == WatchForm::json) return std::make_unique<JsonOutput>(lines);
  return std::make_unique<TableOutput>(lines);
}

}  // namespace quor_host
