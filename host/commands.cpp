#include "commands.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "bars.h"
#ifdef QUOR_CHART_PROGRAM
#include "program.h"
#elif defined QUOR_CHART
#include "chart/chart.h"
#endif
#include "errors.h"
#include "events.h"
#include "fields.h"
#include "output.h"
#include "references.h"
#include "report.h"
#include "script.h"
#include "text.h"

namespace quor_host {
namespace {

constexpr int exit_sound = 0;
constexpr int exit_script_error = 1;

std::string read_optional(const std::string& path) {
  return path.empty() ? std::string() : read_file(path);
}

Answers answers_of(const Options& options) {
  Answers answers;
  answers.is_trading = options.is_trading;
  answers.calendar = read_optional(options.calendar_path);
  for (const std::string& constant : options.market_constants) {
    const size_t mark = constant.find('=');
    const auto value =
        mark == std::string::npos ? std::nullopt : to_number(constant.substr(mark + 1));
    if (!value) throw HostError("--extra " + constant + ": not of the form KEY=NUMBER");
    answers.market_constants[to_upper(constant.substr(0, mark))] = *value;
  }
  return answers;
}

/// A script in its instance, compiled.
struct Compiled {
  explicit Compiled(const Options& options)
      : source(options.script_path.empty() ? options.script_text : read_file(options.script_path)),
        statements(split_script(source)),
        session(options.subject, answers_of(options)),
        report_text(session.compile(source, read_optional(options.parameters_path),
                                    read_optional(options.lines_path))),
        report(parse_report(report_text)) {}

  std::string source;
  std::vector<Statement> statements;
  Session session;
  std::string report_text;
  Report report;
};

/// The script's named lines without their values.
std::vector<Line> lines_of(const Compiled& compiled) {
  std::vector<Line> lines;
  for (const std::string& name : declared_names(compiled.statements)) {
    const auto column = compiled.session.column_of(name);
    if (column) lines.push_back({name, *column, {}});
  }
  return lines;
}

void warn(const std::string& text) { std::cerr << "quor: warning: " << text << '\n'; }

void warn_of_missing_data(const Report& report, const Bars& bars, const std::string& path) {
  for (const uint32_t id : report.fields) {
    if (id == field_time || bars.columns.contains(id)) continue;
    warn(path + " has no column for " + field_text(id) + ", which reads as null");
  }
  for (const auto* references : {&report.securities, &report.periods, &report.quotes}) {
    for (const Reference& reference : *references) {
      warn("no data for " + reference.source + ' ' + field_text(reference.field) +
           ", which reads as null");
    }
  }
}

int print_script_failure(const Failure& failure, const Compiled& compiled) {
  print_failure(std::cerr, failure, compiled.statements);
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

/// Feeds bars and references and runs the script.
Failure calculate(const Options& options, Compiled& compiled, const Bars& bars) {
  const auto columns = read_references(options.references, compiled.report, bars.keys);
  warn_of_missing_data(compiled.report, bars, options.bars_path);
  compiled.session.feed(rows_json(bars, compiled.report.fields));
  if (compiled.session.row_count() != bars.keys.size()) {
    throw HostError("the library took only " + std::to_string(compiled.session.row_count()) +
                    " of " + std::to_string(bars.keys.size()) + " bars");
  }
  for (const FilledColumn& column : columns) {
    for (size_t row = 0; row < bars.keys.size(); ++row) {
      compiled.session.set_cell(bars.keys[row], column.column, column.values[row]);
    }
  }
  if (options.fire_signals) print_events(std::cout, compiled.session.shapes());
  return parse_answer(compiled.session.calculate(options.first_row, options.fire_signals));
}

/// Compiles and calculates; with success `use` gets the script and its bars.
template <typename Use>
int calculate_and(const Options& options, const Use& use) {
  Compiled compiled(options);
  Failure failure = compiled.report.failure;
  if (failure.code == 0) {
    const Bars bars = read_bars(options.bars_path);
    failure = calculate(options, compiled, bars);
    if (failure.code == 0) {
      use(compiled, bars);
      return exit_sound;
    }
  }
  return print_script_failure(failure, compiled);
}

}  // namespace

int check_script(const Options& options) {
  const Compiled compiled(options);
  if (options.as_json) std::cout << compiled.report_text << '\n';
  const Failure& failure = compiled.report.failure;
  if (failure.code != 0) return print_script_failure(failure, compiled);
  if (options.as_json) return exit_sound;
  print_report(std::cout, compiled.report, lines_of(compiled),
               parse_texts(compiled.session.functions()),
               parse_texts_under(compiled.session.shapes(), "ShapeName"));
  return exit_sound;
}

int run_script(const Options& options) {
  return calculate_and(options, [&options](const Compiled& compiled, const Bars& bars) {
    const Results results = results_of(compiled, bars.keys);
    if (options.as_json) {
      print_json(std::cout, results);
    } else {
      print_table(std::cout, results, options.last);
    }
  });
}

#ifdef QUOR_CHART_PROGRAM

int draw_script(const Options& /*options*/, char** arguments) {
  run_instead(QUOR_CHART_PROGRAM, arguments);
}

#elif defined QUOR_CHART

int draw_script(const Options& options, char** /*arguments*/) {
  return calculate_and(options, [&options](const Compiled& compiled, const Bars& bars) {
    draw_chart(compiled.session, bars, options.last, options.picture_size.at(0),
               options.picture_size.at(1), options.picture_path);
  });
}

#endif

}  // namespace quor_host
