#include "watch.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "../errors.h"
#include "../input/fields.h"
#include "../input/growing_input.h"
#include "../options/period.h"
#include "../output/console.h"
#include "../output/messages.h"
#include "../process/interrupt.h"
#include "../script_run.h"
#include "../text.h"
#include "watch_output.h"

namespace quor_host {
namespace {

using quor::engine::Event;
using quor::engine::Field;
using quor::engine::Script;

constexpr int exit_sound = 0;
constexpr int exit_failure = 1;

WatchForm form_of(const WatchOptions& options) {
  if (options.as_csv) return WatchForm::csv;
  return options.as_json ? WatchForm::json : WatchForm::table;
}

/// A bar that has been read.
struct ReadBar {
  int64_t key = 0;
  std::vector<double> values;  ///< of the reader's fields
};

/// Signals are raised anew with each calculation of a bar; a signal is news if it didn't stand at
/// the calculation before. Notices come once by themselves, unless all bars are calculated as new.
class News {
 public:
  explicit News(bool notices_repeat) : notices_repeat_(notices_repeat) {}

  /// Of the events of a calculation from the bar of a key on those to tell.
  std::vector<Event> of(const std::vector<Event>& events, int64_t first_key) {
    std::vector<Event> news;
    for (const Event& event : events) {
      if (!repeats(event) || !stands(event)) news.push_back(event);
    }
    std::erase_if(standing_, [&](const Signal& signal) { return signal.key >= first_key; });
    for (const Event& event : events) {
      if (repeats(event)) standing_.push_back({event.key, event.column});
    }
    return news;
  }

  /// Bars before the one of the key aren't calculated again, but by one that comes late.
  void forget_before(int64_t key) {
    std::erase_if(standing_, [key](const Signal& signal) { return signal.key < key; });
  }

 private:
  struct Signal {
    int64_t key;
    uint32_t column;
  };

  bool repeats(const Event& event) const { return notices_repeat_ || event.word != "NOTICE"; }
  bool stands(const Event& event) const {
    return std::ranges::any_of(standing_, [&event](const Signal& signal) {
      return signal.key == event.key && signal.column == event.column;
    });
  }

  bool notices_repeat_;
  std::vector<Signal> standing_;
};

/// All bars by their keys, for a script that has to see all of them again.
class History {
 public:
  void put(const ReadBar& bar) {
    columns_.resize(bar.values.size());
    const auto place = std::ranges::lower_bound(keys_, bar.key);
    const auto at = place - keys_.begin();
    const bool is_known = place != keys_.end() && *place == bar.key;
    if (!is_known) keys_.insert(place, bar.key);
    for (size_t i = 0; i < columns_.size(); ++i) {
      if (!is_known) columns_[i].insert(columns_[i].begin() + at, 0.0);
      columns_[i][static_cast<size_t>(at)] = bar.values[i];
    }
  }

  const std::vector<int64_t>& keys() const { return keys_; }
  const std::vector<double>& column(size_t place) const { return columns_[place]; }

 private:
  std::vector<int64_t> keys_;
  std::vector<std::vector<double>> columns_;  ///< as the values of a bar
};

/// A script that takes bars one after the other and prints what it comes to.
class Watch {
 public:
  Watch(const WatchOptions& options, Script& script, Circumstances about,
        std::span<const uint32_t> fields, const References& references)
      : options_(options),
        script_(script),
        about_(std::move(about)),
        is_whole_(script.follows_later_bars()),
        news_(is_whole_) {
    for (const uint32_t id : script_.report().fields) {
      const auto place = std::ranges::find(fields, id);
      if (place == fields.end()) continue;
      fields_.emplace_back(id, static_cast<size_t>(place - fields.begin()));
    }
    series_ = references.series_for(script_.report());
    const auto lines = shown_lines(script_, options.lines);
    for (const ShownLine& line : lines) columns_.push_back(line.column);
    output_ = make_output(form_of(options), lines);
    values_.resize(columns_.size());
  }

  /// Bars that are there at the start: of the past, so that nobody is told of their events. Whether
  /// the last of them is finished isn't known. False for an error.
  bool begin_with(std::vector<ReadBar> bars) {
    if (options_.finished_alone) {
      held_ = std::move(bars.back());
      bars.pop_back();
      if (bars.empty()) return true;
    }
    for (const ReadBar& bar : bars) {
      take_in(bar);
      if (is_whole_) history_.put(bar);
    }
    if (!calculate(0)) return false;
    const uint32_t rows = script_.row_count();
    const auto first = static_cast<uint32_t>(rows - std::min<size_t>(rows, options_.last));
    for (size_t i = 0; i < columns_.size(); ++i) {
      output_->learn(i, script_.column(columns_[i]));
    }
    for (uint32_t row = first; row < rows; ++row) show(row);
    output_->flush();
    return true;
  }

  /// A new bar or one that has changed. False for an error.
  bool take(const ReadBar& bar) {
    if (!options_.finished_alone) return take_now(bar);
    const std::optional<ReadBar> held = std::exchange(held_, bar);
    return !held || held->key == bar.key || take_now(*held);
  }

  void flush() { output_->flush(); }
  void finish() { output_->finish(); }

 private:
  bool take_now(const ReadBar& bar) {
    const bool is_behind = script_.row_count() > 0 && bar.key < script_.key_of(last_row());
    if (is_behind) warn_of_order(bar.key);
    const auto news = is_whole_ ? calculate_whole(bar) : calculate_on(bar, is_behind);
    if (!news) return false;
    const uint32_t row = *script_.row_of(bar.key);
    show(row);
    for (const Event& event : *news) {
      if (event.row == row || event.row + 2 > last_row()) output_->tell(event);
    }
    return true;
  }

  uint32_t last_row() const { return script_.row_count() - 1; }

  std::optional<std::vector<Event>> calculate_whole(const ReadBar& bar) {
    history_.put(bar);
    script_.restart(about_.settings.subject);
    std::vector<Field> fields;
    for (const auto& [id, place] : fields_) fields.push_back({id, history_.column(place)});
    std::vector<std::vector<double>> columns(series_.size());
    for (size_t i = 0; i < series_.size(); ++i) {
      for (const int64_t key : history_.keys()) columns[i].push_back(series_[i].at(key));
      fields.push_back({series_[i].column(), columns[i]});
    }
    script_.set_rows(history_.keys(), fields);
    return calculate(0);
  }

  /// A new bar takes marks of the last one from the bar before, which is calculated with it; one
  /// between others moves all behind it.
  std::optional<std::vector<Event>> calculate_on(const ReadBar& bar, bool is_behind) {
    const uint32_t before = script_.row_count();
    take_in(bar);
    const bool is_new = script_.row_count() > before;
    return calculate(is_behind ? 0 : last_row() - (is_new && before > 0 ? 1 : 0));
  }

  void take_in(const ReadBar& bar) {
    cells_.clear();
    for (const auto& [id, place] : fields_) cells_.push_back({id, {&bar.values[place], 1}});
    reference_values_.clear();
    reference_values_.reserve(series_.size());
    for (const ReferenceSeries& series : series_) {
      reference_values_.push_back(series.at(bar.key));
      cells_.push_back({series.column(), {&reference_values_.back(), 1}});
    }
    script_.set_rows({&bar.key, 1}, cells_);
  }

  /// The events to tell, or nothing for an error, which is told.
  std::optional<std::vector<Event>> calculate(uint32_t first) {
    if (!script_.calculate(first, true)) {
      auto news = news_.of(script_.events(), script_.key_of(first));
      news_.forget_before(script_.key_of(std::max(script_.row_count(), 2U) - 2));
      return news;
    }
    output_->flush();
    Findings findings = findings_of(script_, about_);
    std::erase_if(findings, [](const quor_advice::Finding& finding) {
      return finding.severity != quor_advice::Severity::error;
    });
    show_findings(findings, script_.source(), options_.script.name());
    return std::nullopt;
  }

  void show(uint32_t row) {
    for (size_t i = 0; i < columns_.size(); ++i) values_[i] = script_.column(columns_[i])[row];
    output_->show(script_.key_of(row), values_);
  }

  void warn_of_order(int64_t key) {
    if (std::exchange(is_warned_, true)) return;
    output_->flush();
    warn("the bar of " + key_text(key, true) + " comes behind a later one");
  }

  const WatchOptions& options_;
  Script& script_;
  Circumstances about_;
  bool is_whole_;                                    ///< each bar asks for a calculation of all
  History history_;                                  ///< only then
  std::vector<std::pair<uint32_t, size_t>> fields_;  ///< by id, with their places in a bar
  std::vector<ReferenceSeries> series_;
  std::vector<uint32_t> columns_;
  std::unique_ptr<WatchOutput> output_;
  News news_;
  std::optional<ReadBar> held_;
  bool is_warned_ = false;
  std::vector<Field> cells_;
  std::vector<double> reference_values_;
  std::vector<double> values_;
};

/// The way from bytes to a watch: the first bars tell the period.
class Watcher {
 public:
  explicit Watcher(const WatchOptions& options)
      : options_(options),
        name_(input_name(options.bars.path)),
        about_{first_settings_of(options.script), 0, std::nullopt, std::nullopt},
        script_(source_of(options.script), about_.settings),
        references_(options.bars),
        input_(options.bars.path),
        reader_(name_, naming_of(options.bars.form),
                [this](const quor_bars::BarRow& row) { take(row); }) {}

  int work() {
    warn_of_idle(options_.script, script_.source());
    if (script_.report().failure) {
      show_findings(findings_of(script_, about_), script_.source(), options_.script.name());
      return exit_failure;
    }
    const StopOnInterrupt interrupt;
    while (const auto bytes = input_.read()) {
      reader_.feed(*bytes);
      const bool is_caught_up = bytes->empty() || !input_.is_file();
      if (is_caught_up && !watch_ && !first_.empty()) begin();
      if (status_) break;
      if (watch_) watch_->flush();
      if (!std::cout) return exit_failure;
      if (!bytes->empty() || !input_.is_file()) continue;
      const std::string fate = input_.wait();
      if (!fate.empty()) return end_of_file(fate);
    }
    return finish();
  }

 private:
  void take(const quor_bars::BarRow& row) {
    bar_.key = row.key;
    bar_.values.assign(row.values.begin(), row.values.end());
    if (!watch_) {
      first_.push_back(bar_);
    } else if (!status_ && !watch_->take(bar_)) {
      status_ = exit_failure;
    }
  }

  void begin() {
    std::vector<int64_t> keys;
    for (const ReadBar& bar : first_) keys.push_back(bar.key);
    about_.period = period_of(options_.script, keys).value_or(0);
    about_.settings.subject.period = about_.period == 0 ? period_of_a_day : about_.period;
    about_.supply = supply_of(options_.script, false);
    script_.restart(about_.settings.subject);
    if (!script_.report().failure) {
      references_.require_use(script_.report());
      tell_what_lacks();
    }
    const Findings findings = findings_of(script_, about_);
    show_findings(findings, script_.source(), options_.script.name());
    if (status_of(options_.script, findings) != exit_sound) {
      status_ = exit_failure;
      return;
    }
    watch_.emplace(options_, script_, about_, reader_.fields(), references_);
    if (!take_first()) status_ = exit_failure;
  }

  /// Those of a file are of the past, those of a pipe come now. False for an error.
  bool take_first() {
    std::vector<ReadBar> first = std::exchange(first_, {});
    if (!input_.is_file()) {
      return std::ranges::all_of(first, [this](const ReadBar& bar) { return watch_->take(bar); });
    }
    const size_t count = first.size();
    if (!watch_->begin_with(std::move(first))) return false;
    if (is_watched()) {
      note(std::to_string(count) + (count == 1 ? " bar" : " bars") +
           " so far; waiting for more, Ctrl-C ends");
    }
    return true;
  }

  void tell_what_lacks() const {
    const auto fields = reader_.fields();
    for (const uint32_t id : script_.report().fields) {
      if (is_given_elsewhere(id) || std::ranges::find(fields, id) != fields.end()) continue;
      warn(name_ + " has no column for " + field_text(id) + ", which reads as null");
    }
    for (const std::string& text : references_.missing(script_.report())) {
      warn("no data for " + text + ", which reads as null; --reference gives it");
    }
  }

  int end_of_file(const std::string& fate) {
    if (watch_) watch_->finish();
    tell_error(fate);
    return exit_failure;
  }

  int finish() {
    // What Ctrl-C cuts off isn't whole; a pipe that has ended is.
    if (!status_ && !input_.is_file() && !StopOnInterrupt::has_come()) {
      reader_.finish();
      if (!watch_ && first_.empty()) throw HostError(name_ + ": no bars");
      if (!watch_) begin();
    }
    if (watch_) watch_->finish();
    return status_.value_or(exit_sound);
  }

  const WatchOptions& options_;
  std::string name_;
  Circumstances about_;
  Script script_;
  References references_;
  GrowingInput input_;
  quor_bars::BarReader reader_;
  ReadBar bar_;
  std::vector<ReadBar> first_;  ///< until the watch begins
  std::optional<Watch> watch_;
  std::optional<int> status_;  ///< once it is decided
};

}  // namespace

int watch_bars(const WatchOptions& options) { return Watcher(options).work(); }

}  // namespace quor_host
