#include "commands.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <optional>
#include <span>
#include <utility>

#include "advice/advice.h"
#include "bars.h"
#include "chart/chart.h"
#include "encoding.h"
#include "errors.h"
#include "events.h"
#include "fields.h"
#include "json_files.h"
#include "market_constants.h"
#include "output.h"
#include "parameters.h"
#include "paths.h"
#include "period.h"
#include "program.h"
#include "references.h"
#include "report.h"
#include "text.h"

namespace quor_host {
namespace {

constexpr int exit_sound = 0;
constexpr int exit_script_error = 1;

std::string lines_of_user(const Options& options) {
  if (options.lines_path.empty()) return {};
  return read_array(options.lines_path, R"([{"LINE_NAME":"MA5","COLOR_KEY":"...","LINE_THICK":1,)"
                                        R"("IS_SELECTED":1}, ...])");
}

std::string source_of(const Options& options) {
  if (!options.script_path.empty()) return read_text_input(options.script_path);
  require_utf8(options.script_text, "-e");
  return options.script_text;
}

Answers answers_of(const Options& options) {
  Answers answers;
  answers.is_trading = options.is_trading;
  if (!options.calendar_path.empty()) answers.calendar = read_calendar(options.calendar_path);
  answers.market_constants = market_constants(options.market_constants);
  return answers;
}

/// The period that the user names, else the one that the bars tell, which one line says; nothing
/// where they tell none. Without bars it is a day.
std::optional<int32_t> period_of(const Options& options, const Bars* bars) {
  if (!options.period.empty() || bars == nullptr) {
    return parse_period(options.period).value_or(period_of_a_day);
  }
  const auto period = infer_period(bars->keys);
  std::cerr << "quor: period: " << period_text(period.value_or(period_of_a_day))
            << (period ? ", by the distances of the bars" : ", as the bars tell none")
            << "; --period sets another\n";
  return period;
}

Subject subject_of(const Options& options, std::optional<int32_t> period) {
  Subject subject = options.subject;
  subject.period = period.value_or(period_of_a_day);
  return subject;
}

void warn(const std::string& text) { std::cerr << "quor: warning: " << text << '\n'; }

/// What the script can have of what it asks for beside bars: the library asks for a named security
/// only, and for a calendar where the market is named, too.
quor_advice::Supply supply_of(const Subject& subject, const Answers& answers) {
  quor_advice::Supply supply;
  supply.has_calendar =
      !answers.calendar.empty() && !subject.security.empty() && !subject.market.empty();
  supply.calendar_advice = "--calendar gives one, together with --code and --market";
  supply.constant_advice = "--extra gives one, together with --code";
  if (subject.security.empty()) return supply;
  for (const auto& [key, value] : answers.market_constants) supply.constants.push_back(key);
  return supply;
}

/// A script in its instance, compiled.
struct Compiled {
  /// Without bars the period is the user's, or a day.
  explicit Compiled(const Options& options, const Bars* bars = nullptr)
      : source(source_of(options)),
        parameters(parameters_json(options.parameters_path, options.settings)),
        period(period_of(options, bars)),
        subject(subject_of(options, period)),
        answers(answers_of(options)),
        session(subject, answers),
        line_settings(lines_of_user(options)),
        report_text(session.compile(source, parameters, line_settings)),
        report(parse_report(report_text)) {
    const quor_advice::ScriptNames names = quor_advice::names_in(source);
    for (const std::string& text : faults_of_settings(options.settings, source)) warn(text);
    for (const std::string& text : idle_constants(options.market_constants, names)) warn(text);
    for (const std::string& name : names_of_settings(line_settings)) {
      if (std::ranges::find(names.lines, name) != names.lines.end()) continue;
      warn(options.lines_path + ": the script has no line " + name);
    }
    if (bars != nullptr) supply = supply_of(subject, answers);
  }

  std::string source;
  std::string parameters;
  std::optional<int32_t> period;
  Subject subject;
  Answers answers;
  Session session;
  std::string line_settings;
  std::string report_text;
  Report report;
  std::optional<quor_advice::Supply> supply;  ///< for a calculation
};

/// The script's named lines without their values.
std::vector<Line> lines_of(const Compiled& compiled) {
  std::vector<Line> lines;
  for (const std::string& name : quor_advice::names_in(compiled.source).lines) {
    const auto column = compiled.session.column_of(name);
    if (column) lines.push_back({name, *column, {}});
  }
  return lines;
}

/// The fields that the script wants and the bars don't have.
std::vector<uint32_t> missing_fields(const Report& report, const Bars& bars) {
  std::vector<uint32_t> missing;
  for (const uint32_t id : report.fields) {
    if (!is_given_elsewhere(id) && !bars.columns.contains(id)) missing.push_back(id);
  }
  return missing;
}

/// Two numbers mark a missing value, also where a volume comes to one of them.
void warn_of_marks(const Report& report, const Bars& bars, const std::string& path) {
  const auto is_mark = [](double value) { return value == 2147483648.0 || value == 4294967295.0; };
  for (const uint32_t id : report.fields) {
    const auto column = bars.columns.find(id);
    if (column == bars.columns.end() || std::ranges::none_of(column->second, is_mark)) continue;
    warn(path + " has 2147483648 or 4294967295 for " + field_text(id) + ", which read as null");
  }
}

void warn_of_missing_data(const Report& report, const Bars& bars, const std::string& path) {
  for (const uint32_t id : missing_fields(report, bars)) {
    warn(path + " has no column for " + field_text(id) + ", which reads as null");
  }
  for (const auto* references : {&report.securities, &report.periods, &report.quotes}) {
    for (const Reference& reference : *references) {
      warn("no data for " + reference.source + ' ' + field_text(reference.field) +
           ", which reads as null");
    }
  }
}

using Findings = std::vector<quor_advice::Finding>;

Findings findings_of(const Compiled& compiled, std::string_view answer = {},
                     std::optional<quor_advice::RunFacts> run = std::nullopt) {
  quor_advice::Input input;
  input.script = compiled.source;
  input.parameters = compiled.parameters;
  input.report = compiled.report_text;
  input.answer = answer;
  input.period = compiled.period.value_or(0);
  input.run = std::move(run);
  input.supply = compiled.supply;
  input.compile = [&compiled](std::string_view script) {
    const Session session(compiled.subject, compiled.answers);
    return session.compile(script, compiled.parameters, compiled.line_settings);
  };
  return quor_advice::advise(input);
}

void show_findings(const Options& options, const Compiled& compiled, const Findings& findings) {
  const std::string name = options.script_path.empty() ? "-e" : options.script_path;
  std::cerr << quor_advice::compiler_text(findings, compiled.source, name);
}

bool has_error(const Findings& findings) {
  return std::ranges::find(findings, quor_advice::Severity::error,
                           &quor_advice::Finding::severity) != findings.end();
}

int status_of(const Options& options, const Findings& findings) {
  const bool fails = std::ranges::any_of(findings, [&options](const quor_advice::Finding& finding) {
    return options.is_strict || finding.severity == quor_advice::Severity::error;
  });
  return fails ? exit_script_error : exit_sound;
}

/// The way out for a script that has an error.
int report_failure(const Options& options, const Compiled& compiled, const Findings& findings) {
  if (options.as_json) {
    print_findings(std::cout, compiled.report_text, quor_advice::json_text(findings));
  }
  show_findings(options, compiled, findings);
  return exit_script_error;
}

Results results_of(const Compiled& compiled, std::vector<int64_t> keys) {
  Results results;
  std::ranges::sort(keys);
  results.keys = std::move(keys);
  results.lines = lines_of(compiled);
  const uint32_t rows = compiled.session.row_count();
  for (Line& line : results.lines) {
    line.values.reserve(rows);
    for (uint32_t row = 0; row < rows; ++row) {
      line.values.push_back(compiled.session.cell(row, line.column));
    }
  }
  results.report = compiled.report_text;
  results.shapes = compiled.session.shapes();
  return results;
}

/// The lines without a value on any bar from the first calculated one on.
std::vector<std::string> null_lines(const std::vector<Line>& lines, size_t first_row) {
  std::vector<std::string> names;
  for (const Line& line : lines) {
    const auto calculated = std::span(line.values).subspan(std::min(first_row, line.values.size()));
    const auto is_null = [](double value) { return std::isnan(value); };
    if (!calculated.empty() && std::ranges::all_of(calculated, is_null)) names.push_back(line.name);
  }
  return names;
}

/// Feeds bars and references, runs the script and gives the library's answer.
std::string calculate(const Options& options, Compiled& compiled, const Bars& bars) {
  const auto columns = read_references(options.references, compiled.report, bars.keys);
  warn_of_missing_data(compiled.report, bars, input_name(options.bars_path));
  warn_of_marks(compiled.report, bars, input_name(options.bars_path));
  compiled.session.feed(rows_json(bars, compiled.report.fields));
  if (compiled.session.row_count() != bars.keys.size()) {
    throw HostError("the library took only " + std::to_string(compiled.session.row_count()) +
                    " of " + std::to_string(bars.keys.size()) + " bars");
  }
  for (const FilledColumn& column : columns) {
    if (std::ranges::all_of(column.values, [](double value) { return std::isnan(value); })) {
      warn("--reference " + column.text + " has no value at the times of the bars");
    }
    for (size_t row = 0; row < bars.keys.size(); ++row) {
      compiled.session.set_cell(bars.keys[row], column.column, column.values[row]);
    }
  }
  std::ostream& events = options.as_csv || options.as_json ? std::cerr : std::cout;
  if (options.fire_signals) print_events(events, compiled.session.shapes());
  return compiled.session.calculate(options.first_row, options.fire_signals);
}

/// Compiles and calculates; with success `use` gets the script, its bars and its results.
template <typename Use>
int calculate_and(const Options& options, const Use& use) {
  const Bars bars = read_bars(options.bars_path, options.columns);
  if (options.first_row >= bars.keys.size()) {
    throw HostError("--from " + std::to_string(options.first_row) + ": there are only " +
                    std::to_string(bars.keys.size()) + " bars, the first of them is row 0");
  }
  Compiled compiled(options, &bars);
  if (compiled.report.failure.code != 0) {
    return report_failure(options, compiled, findings_of(compiled));
  }
  const std::string answer = calculate(options, compiled, bars);
  quor_advice::RunFacts facts{bars.keys, {}, missing_fields(compiled.report, bars)};
  if (parse_answer(answer).code != 0) {
    return report_failure(options, compiled, findings_of(compiled, answer, facts));
  }
  Results results = results_of(compiled, bars.keys);
  facts.null_lines = null_lines(results.lines, options.first_row);
  const Findings findings = findings_of(compiled, answer, std::move(facts));
  results.findings = quor_advice::json_text(findings);
  show_findings(options, compiled, findings);
  use(compiled, bars, results);
  return status_of(options, findings);
}

}  // namespace

int check_script(const Options& options) {
  const Compiled compiled(options);
  const Findings findings = findings_of(compiled);
  if (compiled.report.failure.code != 0) return report_failure(options, compiled, findings);
  show_findings(options, compiled, findings);
  if (options.as_json) {
    print_findings(std::cout, compiled.report_text, quor_advice::json_text(findings));
  } else {
    print_report(std::cout, compiled.report, findings.empty(), lines_of(compiled),
                 parse_texts(compiled.session.functions()),
                 parse_texts_under(compiled.session.shapes(), "ShapeName"));
  }
  return status_of(options, findings);
}

int check_scripts(const Options& options) {
  Options one = options;
  size_t sound = 0;
  size_t faulty = 0;
  int status = exit_sound;
  const std::vector<std::string> paths = scripts_under(options.script_paths);
  for (const std::string& path : paths) {
    one.script_path = path;
    const Compiled compiled(one);
    const Findings findings = findings_of(compiled);
    show_findings(one, compiled, findings);
    status = std::max(status, status_of(one, findings));
    if (findings.empty()) ++sound;
    if (has_error(findings)) ++faulty;
  }
  std::cout << paths.size() << (paths.size() == 1 ? " script: " : " scripts: ") << sound
            << " sound, " << faulty << " with errors, " << paths.size() - sound - faulty
            << " with warnings\n";
  return status;
}

int run_script(const Options& options) {
  return calculate_and(options, [&options](const Compiled&, const Bars&, const Results& results) {
    if (options.as_json) {
      print_json(std::cout, results);
    } else if (options.as_csv) {
      print_csv(std::cout, results, options.last);
    } else {
      print_table(std::cout, results, options.last);
    }
  });
}

int draw_script(const Options& options, [[maybe_unused]] char** arguments) {
#ifdef QUOR_CHART_PROGRAM
  if (options.chart.path.ends_with(".png")) run_instead(QUOR_CHART_PROGRAM, arguments);
#endif
  return calculate_and(options,
                       [&options](const Compiled& compiled, const Bars& bars, const Results&) {
                         draw_chart(compiled.session, bars, options.bars_path, options.chart);
                       });
}

}  // namespace quor_host
