#include "run.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/input/fields.h"

namespace quor_host {
namespace {

quor::engine::Settings settings_of(const Task& task, const quor::engine::Subject& subject) {
  quor::engine::Settings settings;
  settings.subject = subject;
  settings.parameters = task.parameters;
  return settings;
}

quor::engine::Subject with_period(quor::engine::Subject subject, uint32_t period) {
  subject.period = period;
  return subject;
}

quor_advice::Supply supply_of(const quor::engine::Subject& subject) {
  const std::pair<const char*, double> constants[] = {
      {"MINPRICE", subject.min_price},
      {"UNIT", subject.unit},
      {"SHARECOUNTPERUNIT", subject.share_count_per_unit}};
  quor_advice::Supply supply;
  supply.has_calendar = !subject.calendar.empty();
  for (const auto& [name, value] : constants) {
    if (!std::isnan(value)) supply.constants.emplace_back(name);
  }
  supply.calendar_advice = "give it in the tab Data";
  supply.constant_advice = "give it in the tab Data";
  return supply;
}

}  // namespace

Run::Run(Task task, const Surroundings& around, uint32_t period)
    : task_(std::move(task)),
      around_(around),
      subject_(with_period(around.subject, period)),
      script_(task_.script, settings_of(task_, subject_)) {
  if (is_sound()) records_ = drawing_records(script_);
}

void Run::feed(const Bars& bars, size_t first) {
  std::vector<quor::engine::Field> fields;
  missing_.clear();
  for (const uint32_t id : script_.report().fields) {
    const auto column = bars.columns.find(id);
    if (column != bars.columns.end()) {
      fields.push_back({id, std::span(column->second).subspan(first)});
    } else if (!is_given_elsewhere(id)) {
      missing_.push_back(id);
    }
  }
  const auto keys = std::span(bars.keys).subspan(first);
  std::vector<std::vector<double>> others;  // whose values keep their places
  for (const auto& reference : script_.report().references) {
    auto values = values_for(around_, reference, bars, subject_.period, first);
    if (!values) continue;
    others.push_back(std::move(*values));
    fields.push_back({reference.column, others.back()});
  }
  script_.set_rows(keys, fields);
}

bool Run::calculate(const Bars& bars) {
  script_.clear_rows();
  feed(bars, 0);
  is_calculated_ = true;
  const bool is_done = !script_.calculate(0, true);
  events_ = script_.events();
  return is_done;
}

bool Run::calculate_last(const Bars& bars) {
  const size_t last = bars.keys.size() - 1;
  feed(bars, last);
  return !script_.calculate(static_cast<uint32_t>(last), true);
}

quor_advice::Input Run::input() const {
  quor_advice::Input input;
  input.script = script_.source();
  input.parameters = script_.parameters();
  input.report = script_.report().text;
  input.answer = script_.answer();
  input.period = static_cast<int32_t>(subject_.period);
  input.supply = supply_of(subject_);
  input.compile = [this](std::string_view script) {
    const quor::engine::Script other(std::string(script), settings_of(task_, subject_));
    return other.report().text;
  };
  return input;
}

std::vector<quor_advice::Finding> Run::findings(const Bars& bars) const {
  quor_advice::Input input = this->input();
  if (is_calculated_ && is_sound() && !bars.keys.empty()) {
    quor_advice::RunFacts& facts = input.run.emplace();
    facts.keys = bars.keys;
    facts.missing_fields = missing_;
    for (const auto& line : script_.lines()) {
      const bool is_null =
          std::ranges::all_of(column(line.column), [](double value) { return std::isnan(value); });
      if (is_null) facts.null_lines.push_back(line.name);
    }
  }
  return quor_advice::advise(input);
}

std::vector<quor_advice::Fix> Run::fixes(const quor_advice::Finding& finding) const {
  return quor_advice::fixes_of(input(), finding);
}

std::span<const double> Run::column(uint32_t id) const {
  try {
    return script_.column(id);
  } catch (const quor::engine::Misuse&) {
    return {};
  }
}

}  // namespace quor_host
