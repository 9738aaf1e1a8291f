#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <functional>
#include <iostream>
#include <utility>

#include "commands.h"
#include "errors.h"
#include "format.h"
#include "help.h"
#include "input/paths.h"
#include "options/option_checks.h"
#include "options/usage.h"
#include "output/console.h"
#include "output/messages.h"
#include "scan/scan.h"
#include "watch/watch.h"

namespace {

using quor_host::BarOptions;
using quor_host::CheckOptions;
using quor_host::DrawOptions;
using quor_host::PngMeans;
using quor_host::RunOptions;
using quor_host::ScanOptions;
using quor_host::ScriptOptions;
using quor_host::UsageError;
using quor_host::WatchOptions;

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

constexpr auto footer = R"(
  quor help            lists all words of the language
  quor help MA         explains a word, with an example
  quor run --help      explains a command, with examples

A script is a list of statements, each closed by ';'. 'NAME:expression;' is a line that is drawn,
'NAME:=expression;' one that is only calculated.

Exit status: 0 for success, 1 for an error in the script or in a file, 2 for a wrong command.)";

constexpr auto check_footer = R"(
Examples: a file, and a script as an argument.

  quor check samples/kdj.quor
  quor check -e 'MA5:MA(C,N),COLORRED;' --set N=5)";

constexpr auto bars_footer = R"(
Bars are comma-separated values with the names of the columns in the first line: date and close must
be there, and time, open, high, low, volume, amount, or the id of any other field as a number if the
script asks for them. A date reads 2000-01-03, 2000-01-03 09:35, 2000-01-03T09:35:00.000+08:00 or
20000103093500; its clock time counts as it is written.)";

constexpr auto run_examples = R"(
Examples: two averages over daily bars, and where the quick one is above the slow one; the same
script over bars from a pipe, for a spreadsheet.

  quor run --bars samples/index-daily.csv --last 5 \
    -e 'QUICK:MA(C,5); SLOW:MA(C,20); ABOVE:QUICK>SLOW;'
  cat bars.csv | quor run averages.quor --bars - --csv >lines.csv
)";

constexpr auto chart_examples = R"(
Example: the last 250 bars with the lines of a script.

  quor chart samples/kdj.quor --bars samples/index-daily.csv --out kdj.png --last 250
)";

constexpr auto help_footer = R"(
Examples: the list of all words, one word, one command, one code.

  quor help
  quor help MA
  quor help run
  quor help 14)";

void add_check(CLI::App& app, CheckOptions& options) {
  CLI::App& check = *app.add_subcommand("check", "Compile a script and say what it needs");
  check.footer(check_footer);
  add_script_text(check, options.script);
  check
      .add_option("SCRIPT", options.paths,
                  "Files with scripts, or folders with such files (*.quor); - for a pipe")
      ->type_name("")
      ->excludes(check.get_option("-e"));
  add_setting_options(check, options.script);
  add_security_option(check, options.script);
  check.add_flag("--json", options.as_json, "Print the report and the findings as JSON");
}

void add_run(CLI::App& app, RunOptions& options) {
  CLI::App& run = *app.add_subcommand("run", "Run a script over bars and print its lines");
  run.footer(std::string(run_examples) + bars_footer);
  add_script_options(run, options.script);
  add_bar_path(run, options.bars);
  add_bar_options(run, options.script, options.bars);
  add_line_options(run, options.lines);
  run.add_option("-n,--last", options.last, "How many bars to print; 10 in a table, else all")
      ->type_name("N")
      ->transform(quor_host::whole_number(0));
  auto* const json = run.add_flag("--json", options.as_json,
                                  "Print bars, report, findings, drawings and events as JSON");
  run.add_flag("--csv", options.as_csv,
               "Print comma-separated values in full precision, null as an empty cell")
      ->excludes(json);
  run.add_option("--from", options.first_row, "First row to calculate, 0 the oldest bar")
      ->type_name("ROW")
      ->transform(quor_host::whole_number(0))
      ->capture_default_str();
  run.add_flag("--fire", options.fire_signals, "Raise notices and trade signals, and print them");
}

void add_chart(CLI::App& app, DrawOptions& options) {
  CLI::App& chart = *app.add_subcommand("chart", "Draw the bars and what a script draws");
  chart.footer(std::string(chart_examples) + bars_footer);
  add_script_options(chart, options.script);
  add_bar_path(chart, options.bars);
  add_bar_options(chart, options.script, options.bars);
  quor_host::add_chart_options(chart, options.chart);
}

void add_help(CLI::App& app, quor_host::HelpOptions& options) {
  CLI::App& help = *app.add_subcommand(
      "help", "Explain words of the language, commands and the codes of errors");
  help.footer(help_footer);
  help.add_option("TOPIC", options.topics, "Words of the language, commands, or codes of errors")
      ->type_name("");
  // For completion and for those who keep the documentation.
  help.add_flag("--list", options.lists_words, "Print all words, one in a line")->group("");
  help.add_flag("--index", options.prints_index, "Print the index of words in Markdown")->group("");
  help.add_flag("--grammar", options.prints_grammar, "Print the grammar for editors")->group("");
}

/// What a command needs before it can begin; a text for the user if it lacks something.
std::string lack_of(const CLI::App& command, const ScriptOptions& script, const BarOptions* bars) {
  const auto is_given = [&command](const char* option) {
    const CLI::Option* const found = command.get_option_no_throw(option);
    return found != nullptr && found->count() > 0;
  };
  if (!is_given("SCRIPT") && !is_given("-e")) return "no script: give a file or -e 'TEXT'";
  if (bars == nullptr) return {};
  if (!script.path.empty() && !script.text.empty()) {
    return "-e and a file with the script don't go together: give one of them";
  }
  if (bars->path.empty()) {
    return "--bars is missing; write --bars FILE.csv, or --bars - for bars from a pipe";
  }
  if (script.path == "-" && bars->path == "-") {
    return "the script and the bars can't both come from the pipe";
  }
  return {};
}

/// What all commands were told.
struct Told {
  CheckOptions check;
  RunOptions run;
  DrawOptions chart;
  ScanOptions scan;
  WatchOptions watch;
  quor_host::FormatOptions format;
  quor_host::HelpOptions help;
};

/// A command over one script, with what it was told.
struct ScriptCommand {
  std::string_view name;
  ScriptOptions& script;
  BarOptions* bars;
  std::function<int()> work;
};

int run_script_command(const CLI::App& command, Told& told, const PngMeans& png) {
  const ScriptCommand commands[] = {
      {"check", told.check.script, nullptr, [&] { return check_scripts(told.check); }},
      {"run", told.run.script, &told.run.bars, [&] { return run_script(told.run); }},
      {"chart", told.chart.script, &told.chart.bars, [&] { return draw_script(told.chart, png); }},
      {"scan", told.scan.script, nullptr, [&] { return scan_files(told.scan); }},
      {"watch", told.watch.script, &told.watch.bars, [&] { return watch_bars(told.watch); }},
  };
  const auto* const found = std::ranges::find(commands, command.get_name(), &ScriptCommand::name);
  // A file alone, behind a script as text, is one of bars.
  if (found->bars != nullptr && !found->script.text.empty() && found->bars->path.empty()) {
    std::swap(found->bars->path, found->script.path);
  }
  const std::string lack = lack_of(command, found->script, found->bars);
  if (!lack.empty()) throw UsageError(lack);
  if (found->script.is_quiet) quor_host::be_quiet(found->script.is_strict);
  return found->work();
}

/// The exit status once all output is written: a full disk must not pass for success.
int finish(int status) {
  if (std::cout.flush()) return status;
  quor_host::tell_error("the output can't be written");
  return exit_failure;
}

}  // namespace

namespace quor_host {

int run_command_line(int argc, char** argv, const Program& program) {
  std::string name;
  try {
    prepare_streams();
    const std::vector<std::string> arguments = utf8_arguments(argc, argv);
    CLI::App app("Compiles indicator scripts and runs them over bars of a security.", "quor");
    Told told;
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on any system
    app.footer(footer);
    app.set_version_flag("-V,--version", "quor " QUOR_VERSION);
    add_check(app, told.check);
    add_run(app, told.run);
    add_chart(app, told.chart);
    add_scan(app, told.scan);
    add_watch(app, told.watch);
    add_format(app, told.format);
    for (const OwnCommand& own : program.commands) own.add(app);
    add_help(app, told.help);
    try {
      // The parser takes them from the back.
      app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return finish(app.exit(error));
      tell_error(explain(app, error, arguments));
      return exit_usage;
    }
    const CLI::App& command = *app.get_subcommands().front();
    name = command.get_name();
    if (name == "help") return finish(print_help(app, told.help) ? 0 : exit_failure);
    if (name == "format") return finish(format_scripts(told.format));
    const auto own = std::ranges::find(program.commands, name, &OwnCommand::name);
    if (own != program.commands.end()) return own->run();
    return finish(run_script_command(command, told, {program.make_png, program.png_program, argv}));
  } catch (const UsageError& error) {
    tell_error(error.what() + ("\nquor " + name + " --help tells more"));
    return exit_usage;
  } catch (const std::exception& error) {
    tell_error(error.what());
    return exit_failure;
  }
}

}  // namespace quor_host
