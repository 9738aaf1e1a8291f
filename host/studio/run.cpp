#include "run.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "../fields.h"

namespace quor_host {
namespace {

quor::engine::Settings settings_of(const Task& task, uint32_t period) {
  quor::engine::Settings settings;
  settings.subject.period = period;
  settings.parameters = task.parameters;
  return settings;
}

}  // namespace

Run::Run(Task task, uint32_t period)
    : task_(std::move(task)), period_(period), script_(task_.script, settings_of(task_, period)) {
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
  script_.set_rows(std::span(bars.keys).subspan(first), fields);
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

std::vector<quor_advice::Finding> Run::findings(const Bars& bars) const {
  quor_advice::Input input;
  input.script = script_.source();
  input.parameters = script_.parameters();
  input.report = script_.report().text;
  input.answer = script_.answer();
  input.period = static_cast<int32_t>(period_);
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
  input.compile = [this](std::string_view script) {
    const quor::engine::Script other(std::string(script), settings_of(task_, period_));
    return other.report().text;
  };
  return quor_advice::advise(input);
}

std::span<const double> Run::column(uint32_t id) const {
  try {
    return script_.column(id);
  } catch (const quor::engine::Misuse&) {
    return {};
  }
}

}  // namespace quor_host
