#include "commands.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <utility>

#include "chart/chart.h"
#include "errors.h"
#include "input/paths.h"
#include "options/period.h"
#include "output/messages.h"
#include "output/output.h"
#include "process/program.h"
#include "scan/scan_job.h"
#include "script_run.h"
#include "text.h"

namespace quor_host {
namespace {

using quor::engine::Script;

constexpr int exit_sound = 0;
constexpr int exit_script_error = 1;

/// The way out for a script that has an error.
int report_failure(const ScriptOptions& options, const Script& script, const Findings& findings,
                   bool as_json) {
  if (as_json) {
    print_findings(std::cout, script.report().text, quor_advice::json_text(findings));
  }
  show_findings(findings, script.source(), options.name());
  return exit_script_error;
}

/// The lines without a value on any bar from the first calculated one on.
std::vector<std::string> null_lines(const Script& script, uint32_t first_row) {
  std::vector<std::string> names;
  for (const auto& line : script.lines()) {
    const auto values = script.column(line.column);
    const auto calculated = values.subspan(std::min<size_t>(first_row, values.size()));
    const auto is_null = [](double value) { return std::isnan(value); };
    if (!calculated.empty() && std::ranges::all_of(calculated, is_null)) names.push_back(line.name);
  }
  return names;
}

struct Calculation {
  const ScriptOptions& options;
  const BarOptions& bar_options;
  uint32_t first_row = 0;
  bool fire_signals = false;
  bool as_json = false;
  size_t drawn_bars = 0;  ///< how many of the last ones are drawn
};

/// A script that has been calculated.
struct Calculated {
  const Script& script;
  uint32_t period;
  Bars bars;
  Findings findings;
};

bool reads(const Script& script, uint32_t field) {
  const auto& fields = script.report().fields;
  return std::ranges::find(fields, field) != fields.end();
}

/// Of fields that the script doesn't read only what is drawn is kept, the last values.
void drop_unread(Bars& bars, const Script& script, size_t kept) {
  if (kept > 0 && !std::ranges::is_sorted(bars.keys)) return;
  for (auto& [id, values] : bars.columns) {
    if (reads(script, id) || values.size() <= kept) continue;
    const auto end = values.end();
    values = std::vector<double>(end - static_cast<ptrdiff_t>(kept), end);
  }
}

/// The script has a copy of the fields that it reads: of these the bars keep the names alone.
void drop_read(Bars& bars, const Script& script) {
  for (auto& [id, values] : bars.columns) {
    if (reads(script, id)) values = {};
  }
}

/// Compiles and calculates; `use` gets what has come out with success.
template <typename Use>
int calculate_and(const Calculation& task, const Use& use) {
  const auto& [options, bar_options, first_row, fire_signals, as_json, drawn_bars] = task;
  Circumstances about{first_settings_of(options), 0, std::nullopt, std::nullopt};
  Script script(source_of(options), about.settings);
  warn_of_idle(options, script.source());
  if (script.report().failure) {
    return report_failure(options, script, findings_of(script, about), as_json);
  }
  const References references(bar_options);
  Bars bars = read_bars(bar_options.path, naming_of(bar_options.form));
  for (const std::string& doubt : bars.doubts) warn(doubt);
  if (first_row >= bars.keys.size()) {
    throw UsageError("--from " + std::to_string(first_row) + ": the bars are " +
                     std::to_string(bars.keys.size()) + ", and the first of them is row 0");
  }
  about.period = period_of(options, bars.keys).value_or(0);
  about.settings.subject.period = about.period == 0 ? period_of_a_day : about.period;
  about.supply = supply_of(options, false);
  script.restart(about.settings.subject);
  if (script.report().failure) {
    return report_failure(options, script, findings_of(script, about), as_json);
  }
  references.require_use(script.report());
  const std::string name = input_name(bar_options.path);
  drop_unread(bars, script, drawn_bars);
  {
    const auto filled = references.columns_for(script.report(), bars.keys);
    const auto missing = feed(script, bars, filled);
    warn_of_nulls(script, bars, name, missing, references, filled);
    about.run = quor_advice::RunFacts{{}, {}, missing};
  }
  drop_read(bars, script);
  if (script.calculate(first_row, fire_signals)) {
    about.run->keys = bars.keys;
    return report_failure(options, script, findings_of(script, about), as_json);
  }
  about.run->keys = bars.keys;
  about.run->null_lines = null_lines(script, first_row);
  const uint32_t period = about.settings.subject.period;
  const Findings findings = findings_of(script, std::move(about));
  show_findings(findings, script.source(), options.name());
  if (drawn_bars == 0) bars = {};
  use(Calculated{script, period, std::move(bars), findings});
  return status_of(options, findings);
}

int check_script(const CheckOptions& options) {
  const Circumstances about{settings_of(options.script), 0, std::nullopt, std::nullopt};
  const Script script(source_of(options.script), about.settings);
  warn_of_idle(options.script, script.source());
  Circumstances with_period = about;
  with_period.period = about.settings.subject.period;
  const Findings findings = findings_of(script, std::move(with_period));
  if (script.report().failure) {
    return report_failure(options.script, script, findings, options.as_json);
  }
  show_findings(findings, script.source(), options.script.name());
  if (options.as_json) {
    print_findings(std::cout, script.report().text, quor_advice::json_text(findings));
  } else if (!is_quiet()) {
    print_report(std::cout, script, findings.empty());
  }
  return status_of(options.script, findings);
}

int check_several(const CheckOptions& options) {
  ScriptOptions one = options.script;
  size_t sound = 0;
  size_t faulty = 0;
  int status = exit_sound;
  const std::vector<std::string> paths = scripts_under(options.paths);
  for (const std::string& path : paths) {
    one.path = path;
    Circumstances about{settings_of(one), 0, std::nullopt, std::nullopt};
    about.period = about.settings.subject.period;
    const Script script(source_of(one), about.settings);
    warn_of_idle(one, script.source());
    const Findings findings = findings_of(script, std::move(about));
    show_findings(findings, script.source(), one.name());
    status = std::max(status, status_of(one, findings));
    if (findings.empty()) ++sound;
    if (has_error(findings)) ++faulty;
  }
  if (is_quiet()) return status;
  std::cout << paths.size() << (paths.size() == 1 ? " script: " : " scripts: ") << sound
            << " sound, " << faulty << " with errors, " << paths.size() - sound - faulty
            << " with warnings\n";
  return status;
}

/// The last bars of the lines that are shown.
Table table_of(const Script& script, const LineOptions& lines, size_t count) {
  const uint32_t rows = script.row_count();
  const auto first = static_cast<uint32_t>(rows - std::min<size_t>(rows, count));
  Table table;
  table.keys.reserve(rows - first);
  for (uint32_t row = first; row < rows; ++row) table.keys.push_back(script.key_of(row));
  for (const ShownLine& line : shown_lines(script, lines)) {
    table.lines.push_back({line.name, script.column(line.column).subspan(first)});
  }
  return table;
}

void print_events(std::ostream& out, const Script& script) {
  const auto& events = script.events();
  const bool with_time = std::ranges::any_of(events, [](const auto& event) {
    return have_times({&event.key, 1});
  });
  for (const auto& event : events) out << event_text(event, with_time) << '\n';
}

void print_run(const RunOptions& options, const Script& script, const Findings& findings) {
  const bool is_table = !options.as_csv && !options.as_json;
  const size_t count = options.last.value_or(is_table ? 10 : script.row_count());
  const Table table = table_of(script, options.lines, count);
  if (options.fire_signals && !options.as_json) {
    print_events(options.as_csv ? std::cerr : std::cout, script);
  }
  if (options.as_json) {
    print_json(std::cout, table,
               {script.report().text, quor_advice::json_text(findings), script.shapes(),
                options.fire_signals ? &script.events() : nullptr});
  } else if (options.as_csv) {
    print_csv(std::cout, table);
  } else {
    print_table(std::cout, table);
  }
}

/// A security without a code goes by the name of its file.
std::string security_name(const DrawOptions& options) {
  const ScriptOptions& about = options.script;
  if (!about.security.empty()) {
    return about.security + (about.market.empty() ? "" : " · " + about.market);
  }
  return options.bars.path == "-" ? "" : security_of(options.bars.path);
}

}  // namespace

int check_scripts(const CheckOptions& options) {
  const std::vector<std::string>& paths = options.paths;
  const bool is_one = paths.size() < 2 && (paths.empty() || !is_folder(paths[0]));
  if (!is_one) {
    if (options.as_json) throw UsageError("--json is for one script");
    return check_several(options);
  }
  CheckOptions one = options;
  if (!paths.empty()) one.script.path = paths[0];
  return check_script(one);
}

int run_script(const RunOptions& options) {
  const Calculation task{options.script, options.bars, options.first_row, options.fire_signals,
                         options.as_json};
  return calculate_and(task, [&](const Calculated& calculated) {
    print_run(options, calculated.script, calculated.findings);
  });
}

int draw_script(const DrawOptions& options, const PngMeans& png) {
  if (png.program != nullptr && options.chart.path.ends_with(".png")) {
    run_instead(png.program, png.arguments);
  }
  Calculation task{options.script, options.bars};
  task.drawn_bars = drawn_bars(options.chart);
  return calculate_and(task, [&](const Calculated& calculated) {
    draw_chart(calculated.script, {security_name(options), calculated.period}, calculated.bars,
               options.chart, png.make);
  });
}

}  // namespace quor_host
