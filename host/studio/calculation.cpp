#include "calculation.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <utility>

#include "../errors.h"
#include "../fields.h"
#include "../panes/numbers.h"
#include "../period.h"
#include "../text.h"
#include "colours.h"
#include "folder.h"
#include "refusal.h"

namespace quor_host {
namespace {

using Clock = std::chrono::steady_clock;

/// Of the lines: what a script may take of the machine's memory.
constexpr size_t most_cells = 200'000'000;

double milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

/// Ascending keys, the values with them.
void sort_bars(Bars& bars) {
  if (std::ranges::is_sorted(bars.keys)) return;
  std::vector<size_t> order(bars.keys.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::ranges::sort(order, {}, [&bars](size_t i) { return bars.keys[i]; });
  const auto sort = [&order](auto& values) {
    auto sorted = values;
    for (size_t i = 0; i < order.size(); ++i) sorted[i] = values[order[i]];
    values = std::move(sorted);
  };
  sort(bars.keys);
  for (auto& [id, values] : bars.columns) sort(values);
}

Json finding_json(const quor_advice::Finding& finding, const Places& places) {
  Json json = {{"severity", finding.severity == quor_advice::Severity::error ? "error" : "warning"},
               {"from", nullptr},
               {"to", nullptr},
               {"line", finding.line},
               {"column", finding.column},
               {"length", finding.length},
               {"code", finding.code},
               {"sentence", finding.sentence},
               {"suggestion", finding.suggestion}};
  if (finding.line == 0) return json;
  json["from"] = places.of_column(finding.line, finding.column);
  json["to"] = places.of_column(finding.line, finding.column + finding.length);
  return json;
}

Json lines_json(const Run& run) {
  Json lines = Json::array();
  for (const auto& line : run.script().lines()) {
    lines.push_back({{"name", line.name},
                     {"column", line.column},
                     {"statement", line.statement},
                     {"drawn", line.look.has_value()},
                     {"colour", line.look ? Json(line.look->colour) : Json()}});
  }
  return lines;
}

Json missing_json(const Run& run) {
  Json missing = Json::array();
  for (const uint32_t field : run.missing()) {
    missing.push_back({{"field", field}, {"text", field_text(field)}});
  }
  return missing;
}

/// All that a page wants to know of a sound script.
void add_drawing(Json& answer, const Desk& desk) {
  Json references = Json::array();
  for (const auto& reference : desk.run->script().report().references) {
    references.push_back(reference.source);
  }
  answer["lines"] = lines_json(*desk.run);
  answer["records"] = records_json(desk.drawing);
  answer["panes"] = panes_json(desk.drawing);
  answer["colours"] = colours_json(desk.drawing.records);
  answer["columns"] = columns_of(desk.drawing, *desk.run, desk.bars());
  answer["missing"] = missing_json(*desk.run);
  answer["references"] = std::move(references);
  answer["events"] = desk.run->events().size();
  answer["rows"] = desk.row_count();
}

/// A name that no parameter can have is the request's fault.
std::unique_ptr<Run> run_of(const Task& task, uint32_t period) {
  try {
    return std::make_unique<Run>(task, period);
  } catch (const quor::engine::Misuse& misuse) {
    throw Refusal(400, misuse.what());
  }
}

void require_room(const Run& run, size_t rows) {
  if (run.script().lines().size() * rows > most_cells) {
    throw Refusal(413, "the script has too many lines for so many bars");
  }
}

uint32_t period_of(const Desk& desk) {
  return desk.security ? desk.security->period : period_of_a_day;
}

void show(Desk& desk, std::unique_ptr<Run> run) {
  desk.run = std::move(run);
  desk.drawing = drawing_of(*desk.run, desk.bars());
}

uint32_t period_of(const std::string& text) {
  const auto period = parse_period(text);
  if (!period) throw Refusal(400, "\"period\" is none that is known");
  return *period;
}

/// The last task over the bars that are seen.
Json calculate(Desk& desk) {
  const Clock::time_point start = Clock::now();
  auto run = run_of(*desk.task, period_of(desk));
  const Clock::time_point compiled = Clock::now();
  const bool has_bars = desk.row_count() > 0;
  require_room(*run, desk.row_count());
  const bool is_done = run->is_sound() && (!has_bars || run->calculate(desk.bars()));
  const Clock::time_point calculated = Clock::now();
  const Places places(desk.task->script);
  Json findings = Json::array();
  for (const auto& finding : run->findings(desk.bars())) {
    findings.push_back(finding_json(finding, places));
  }
  Json answer = {{"revision", ++desk.revision},
                 {"sound", is_done},
                 {"findings", std::move(findings)},
                 {"sliders", sliders_of(desk.task->script, desk.task->parameters, places)}};
  if (is_done) {
    show(desk, std::move(run));
    add_drawing(answer, desk);
  }
  answer["times"] = {{"compile", milliseconds(compiled - start)},
                     {"calculate", milliseconds(calculated - compiled)},
                     {"total", milliseconds(Clock::now() - start)}};
  return answer;
}

}  // namespace

std::shared_ptr<const Security> read_security(const std::string& name, std::string_view csv,
                                              const std::string& period) {
  auto security = std::make_shared<Security>();
  security->name = name;
  security->bars = parse_bars(csv, name);
  if (security->bars.keys.size() > most_rows) throw Refusal(413, "these are too many bars");
  sort_bars(security->bars);
  security->is_period_guessed = period.empty();
  security->period = period.empty() ? infer_period(security->bars.keys).value_or(period_of_a_day)
                                    : period_of(period);
  return security;
}

Task task_of(const Json& request) {
  Task task{text_of(request, "script"), {}};
  if (task.script.size() > longest_script) {
    throw Refusal(413,
                  "the script is longer than " + std::to_string(longest_script >> 10U) + " KiB");
  }
  const auto parameters = request.find("parameters");
  if (parameters == request.end() || parameters->is_null()) return task;
  if (!parameters->is_array()) throw Refusal(400, "\"parameters\" must be a list");
  for (const Json& parameter : *parameters) {
    if (!parameter.is_object()) throw Refusal(400, "a parameter must be an object");
    const auto value = number_of(parameter, "value");
    if (!value) throw Refusal(400, "a parameter must have a \"value\"");
    task.parameters.emplace_back(to_upper(text_of(parameter, "name")), *value);
  }
  return task;
}

Json take_script(Desk& desk, Task task) {
  std::optional<Task> before = std::exchange(desk.task, std::move(task));
  try {
    return calculate(desk);
  } catch (const Refusal&) {
    desk.task = std::move(before);
    throw;
  }
}

Json recalculate(Desk& desk) {
  std::optional<Task> seen;
  if (desk.run) seen = desk.run->task();
  desk.run.reset();
  Json answer;
  if (desk.task) answer = calculate(desk);
  if (!desk.run && seen) {
    auto run = run_of(*seen, period_of(desk));
    if (run->is_sound() && run->calculate(desk.bars())) show(desk, std::move(run));
  }
  return answer;
}

Json take_bars(Desk& desk, std::shared_ptr<const Security> security) {
  if (desk.run) require_room(*desk.run, security->bars.keys.size());
  desk.play.reset();
  desk.security = std::move(security);
  const auto& [name, bars, period, is_guessed] = *desk.security;
  Json script = recalculate(desk);
  Json fields = Json::array();
  for (const auto& [id, values] : bars.columns) fields.push_back(id);
  const auto close = bars.columns.find(field_close);
  const bool intraday =
      std::ranges::any_of(bars.keys, [](int64_t key) { return key % 1000000 != 0; });
  return {{"revision", ++desk.revision},
          {"name", name},
          {"rows", bars.keys.size()},
          {"first", bars.keys.front()},
          {"last", bars.keys.back()},
          {"period", {{"code", period}, {"name", period_text(period)}, {"guessed", is_guessed}}},
          {"intraday", intraday},
          {"fields", std::move(fields)},
          {"decimals", close == bars.columns.end() ? 2 : decimals_of(close->second)},
          {"script", std::move(script)}};
}

}  // namespace quor_host
