#include "calculation.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <utility>

#include "bars/period.h"
#include "bars/resample.h"
#include "colours.h"
#include "host/errors.h"
#include "host/input/fields.h"
#include "host/options/period.h"
#include "host/panes/numbers.h"
#include "host/studio/refusal.h"
#include "host/text.h"
#include "places.h"
#include "sliders.h"

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

/// Data of others that the script reads, and whether it is there.
Json references_json(const Desk& desk) {
  Json references = Json::array();
  const uint32_t period = desk.security ? desk.security->period : period_of_a_day;
  for (const auto& reference : desk.run->script().report().references) {
    const OtherField other(reference);
    const bool is_security = reference.kind == quor::engine::Reference::Kind::security;
    references.push_back({{"name", other.name},
                          {"text", other.name + ' ' + field_text(other.field)},
                          {"security", is_security},
                          {"given", is_served(desk.around, reference, desk.bars(), period)}});
  }
  return references;
}

/// All that a page wants to know of a sound script.
void add_drawing(Json& answer, const Desk& desk) {
  answer["lines"] = lines_json(*desk.run);
  answer["records"] = records_json(desk.drawing);
  answer["panes"] = panes_json(desk.drawing);
  answer["colours"] = colours_json(desk.drawing.records);
  answer["columns"] = columns_of(desk.drawing, *desk.run, desk.bars());
  answer["missing"] = missing_json(*desk.run);
  answer["references"] = references_json(desk);
  answer["needs"] = {{"calendar", desk.run->script().report().needs_calendar},
                     {"constants", desk.run->script().report().needs_market_constants}};
  answer["events"] = desk.run->events().size();
  answer["rows"] = desk.row_count();
}

/// A name that no parameter can have is the request's fault.
std::unique_ptr<Run> run_of(const Task& task, const Surroundings& around, uint32_t period) {
  try {
    return std::make_unique<Run>(task, around, period);
  } catch (const quor::engine::Misuse& misuse) {
    throw Refusal(400, misuse.what());
  }
}

void require_room(const Run& run, const Security* security) {
  const size_t rows = security == nullptr ? 0 : security->bars.keys.size();
  if (run.script().lines().size() * rows > most_cells) {
    throw Refusal(413, "the script has too many lines for so many bars");
  }
}

/// A script that is compiled and may be calculated over some bars.
struct Attempt {
  std::unique_ptr<Run> run;
  double compile_time = 0.0;
};

Attempt attempt_of(const Desk& desk, const Task& task, const Security* security) {
  const Clock::time_point start = Clock::now();
  const uint32_t period = security == nullptr ? period_of_a_day : security->period;
  Attempt attempt{run_of(task, desk.around, period)};
  attempt.compile_time = milliseconds(Clock::now() - start);
  require_room(*attempt.run, security);
  return attempt;
}

/// The task that was sent last; no run without one.
Attempt last_attempt(const Desk& desk, const Security* security) {
  return desk.task ? attempt_of(desk, *desk.task, security) : Attempt();
}

const Security* security_of(const Desk& desk) { return desk.security ? &*desk.security : nullptr; }

bool calculates(Run& run, const Bars& bars) {
  return run.is_sound() && (bars.keys.empty() || run.calculate(bars));
}

void show(Desk& desk, std::unique_ptr<Run> run) {
  desk.run = std::move(run);
  desk.drawing = drawing_of(*desk.run, desk.bars());
}

/// In place of a script that can't be seen the one that was, or else the bars alone.
void show_instead(Desk& desk, const Task& seen) {
  for (const Task& task : {seen, Task()}) {
    Attempt attempt = attempt_of(desk, task, security_of(desk));
    if (calculates(*attempt.run, desk.bars())) return show(desk, std::move(attempt.run));
  }
}

uint32_t period_of(const std::string& text) {
  const auto period = parse_period(text);
  if (!period) throw Refusal(400, "\"period\" is none that is known");
  return *period;
}

/// The script over the bars that are seen. The answer says what is to be drawn if that is another
/// from here on; without a run at the desk it is, even for a script with an error.
Json calculate(Desk& desk, Attempt attempt, const Task& seen) {
  const Clock::time_point start = Clock::now();
  auto& [run, compile_time] = attempt;
  const bool is_done = calculates(*run, desk.bars());
  const double time = milliseconds(Clock::now() - start);
  const Task task = run->task();
  const Places places(task.script);
  Json findings = Json::array();
  for (const auto& finding : run->findings(desk.bars())) {
    findings.push_back(finding_json(finding, places));
  }
  const bool is_another = is_done || !desk.run;
  if (is_done) {
    show(desk, std::move(run));
  } else if (is_another) {
    show_instead(desk, seen);
  }
  Json answer = {{"sound", is_done},
                 {"findings", std::move(findings)},
                 {"sliders", sliders_of(task.script, task.parameters, places)}};
  if (is_another) add_drawing(answer, desk);
  answer["times"] = {{"compile", compile_time},
                     {"calculate", time},
                     {"total", compile_time + milliseconds(Clock::now() - start)}};
  return answer;
}

/// For other bars. Null without a script.
Json calculate_anew(Desk& desk, Attempt attempt) {
  const Task seen = desk.run ? desk.run->task() : Task();
  desk.run.reset();
  if (attempt.run) return calculate(desk, std::move(attempt), seen);
  return {};
}

/// Under the bars that are seen, all of them.
void lay_over(Desk& desk) {
  if (!desk.overlay || !desk.security) return;
  const auto& [name, bars, period, is_guessed, is_resampled] = *desk.security;
  desk.overlay->values = values_of(desk.overlay->other, field_close, bars.keys, period);
}

/// What the bars are, and the script over them.
Json see_bars(Desk& desk, Security security, Attempt attempt) {
  desk.security = std::move(security);
  lay_over(desk);
  const auto& [name, bars, period, is_guessed, is_resampled] = *desk.security;
  Json script = calculate_anew(desk, std::move(attempt));
  Json fields = Json::array();
  for (const auto& [id, values] : bars.columns) fields.push_back(id);
  const auto close = bars.columns.find(field_close);
  const bool intraday =
      period < quor_bars::period_of_a_day &&
      std::ranges::any_of(bars.keys, [](int64_t key) { return key % 1000000 != 0; });
  return {{"name", name},
          {"rows", bars.keys.size()},
          {"first", bars.keys.front()},
          {"last", bars.keys.back()},
          {"period", {{"code", period}, {"name", period_text(period)}, {"guessed", is_guessed}}},
          {"intraday", intraday},
          {"fields", std::move(fields)},
          {"decimals", close == bars.columns.end() ? 2 : decimals_of(close->second)},
          {"script", std::move(script)}};
}

size_t row_of_key(const Bars& bars, int64_t key) {
  return static_cast<size_t>(std::ranges::lower_bound(bars.keys, key) - bars.keys.begin());
}

/// Whether bars of the same columns begin behind the first of others.
bool continues(const Bars& bars, const Bars& more) {
  const auto same = [](const auto& one, const auto& other) { return one.first == other.first; };
  return !more.keys.empty() && row_of_key(bars, more.keys.front()) > 0 &&
         std::ranges::equal(bars.columns, more.columns, same);
}

void append(Bars& bars, const Bars& more) {
  const size_t kept = row_of_key(bars, more.keys.front());
  const auto join = [kept](auto& values, const auto& others) {
    values.resize(kept);
    values.insert(values.end(), others.begin(), others.end());
  };
  join(bars.keys, more.keys);
  for (auto& [id, values] : bars.columns) join(values, more.columns.at(id));
}

}  // namespace

Security read_security(const std::string& name, std::string_view csv, const std::string& period) {
  Security security{name, parse_bars(quor_bars::beginning_of_text(csv, name), name), 0,
                    period.empty()};
  if (security.bars.keys.size() > most_rows) throw Refusal(413, "these are too many bars");
  sort_bars(security.bars);
  const auto told = infer_period(security.bars.keys);
  security.period = period.empty() ? told.value_or(period_of_a_day) : period_of(period);
  if (told && quor_bars::is_longer(security.period, *told)) {
    security.bars = quor_bars::resampled(security.bars, security.period);
    security.is_resampled = true;
  }
  return security;
}

Json take_script(Desk& desk, Task task) {
  Attempt attempt = attempt_of(desk, task, security_of(desk));
  desk.task = std::move(task);
  const Task seen = desk.run ? desk.run->task() : Task();
  // Values of a long script fill the memory, so those of before make room for them.
  if (attempt.run->is_sound()) desk.run.reset();
  return calculate(desk, std::move(attempt), seen);
}

Json take_subject(Desk& desk, quor::engine::Subject subject) {
  std::swap(desk.around.subject, subject);
  try {
    return recalculate(desk);
  } catch (const Refusal&) {
    desk.around.subject = std::move(subject);
    throw;
  }
}

Json take_other(Desk& desk, Security security) {
  desk.around.others[to_upper(security.name)] = {std::move(security.bars), security.period};
  return recalculate(desk);
}

Json take_forming(Desk& desk, bool takes_forming) {
  desk.around.takes_forming = takes_forming;
  return recalculate(desk);
}

void take_overlay(Desk& desk, std::optional<Security> security) {
  if (security && !security->bars.columns.contains(field_close)) {
    throw Refusal(400, "there is no close among these bars");
  }
  desk.overlay.reset();
  if (!security) return;
  desk.overlay.emplace().other = {std::move(security->bars), security->period};
  lay_over(desk);
}

Json recalculate(Desk& desk) { return calculate_anew(desk, last_attempt(desk, security_of(desk))); }

Json take_bars(Desk& desk, Security security) {
  if (desk.run) require_room(*desk.run, &security);
  Attempt attempt = last_attempt(desk, &security);
  desk.play.reset();
  return see_bars(desk, std::move(security), std::move(attempt));
}

Json take_more(Desk& desk, const Security& more) {
  const bool goes_on = desk.security && !desk.play && !desk.security->is_resampled &&
                       desk.security->name == more.name &&
                       continues(desk.security->bars, more.bars);
  if (!goes_on) throw Refusal(409, "these bars go on where no others end");
  Security grown = *desk.security;
  append(grown.bars, more.bars);
  if (grown.bars.keys.size() > most_rows) throw Refusal(413, "these are too many bars");
  Attempt attempt = last_attempt(desk, &grown);
  return see_bars(desk, std::move(grown), std::move(attempt));
}

}  // namespace quor_host
