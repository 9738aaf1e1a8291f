// quor: compiles and runs scripts from the command line.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <utility>

#include "commands.h"
#include "console.h"
#include "scan.h"

namespace {

using quor_host::Options;
using quor_host::ScanOptions;

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

constexpr auto footer = R"(
Example: two averages over daily bars, and where the quick one is above the slow one.

  quor run --bars samples/index-daily.csv --last 5 \
    -e 'QUICK:MA(C,5); SLOW:MA(C,20); ABOVE:QUICK>SLOW;'

A script is a list of statements, each closed by ';'. 'NAME:expression;' is a line that is drawn,
'NAME:=expression;' one that is only calculated. Bars are a file of comma-separated values with the
names of the columns in its first line: date and close must be there, and time, open, high, low,
volume, amount, or the id of any other field as a number if the script asks for them. A date reads
2000-01-03, 2000-01-03 09:35, or 20000103093500.

Exit status: 0 for success, 1 for an error in the script or in a file, 2 for a wrong command.)";

void add_script_options(CLI::App& command, Options& options) {
  auto* const path = command.add_option("SCRIPT", options.script_path, "File with the script");
  auto* const text = command.add_option("-e", options.script_text, "The script itself");
  path->type_name("");
  text->type_name("TEXT")->excludes(path);
  command
      .add_option("--params", options.parameters_path,
                  "JSON: [{\"PARAM_NAME\":\"N\",\"DEFAULT\":5}, ...]")
      ->type_name("FILE");
  command
      .add_option("--lines", options.lines_path,
                  "JSON: [{\"LINE_NAME\":\"MA5\",\"COLOR_KEY\":\"...\",\"LINE_THICK\":1}, ...]")
      ->type_name("FILE");
  command
      .add_option("--period", options.subject.period,
                  "Period code of the bars: 0x4000 one day, 0x3005 five minutes")
      ->type_name("CODE")
      ->default_str("0x4000");
  command.add_option("--code", options.subject.security, "Code of the security")
      ->type_name("SECURITY");
  command.add_option("--market", options.subject.market, "Its market")->type_name("WORD");
  command.add_option("--timezone", options.subject.time_zone, "Its time zone")
      ->type_name("TEXT")
      ->capture_default_str();
  command
      .add_option("--extra", options.market_constants,
                  "A market constant of the security that --code names: MINPRICE, UNIT or "
                  "SHARECOUNTPERUNIT; may be repeated")
      ->type_name("KEY=NUMBER")
      ->expected(1)
      ->take_all();
  command.add_flag("--trading", options.is_trading, "The market is open now");
  command.add_flag("--strict", options.is_strict, "Exit with status 1 for a warning, too");
}

void add_check(CLI::App& app, Options& options) {
  CLI::App& check = *app.add_subcommand("check", "Compile a script and say what it needs");
  add_script_options(check, options);
  check.add_flag("--json", options.as_json, "Print the report and the findings as JSON");
}

/// What a command that calculates takes.
void add_bar_options(CLI::App& command, Options& options) {
  add_script_options(command, options);
  command.add_option("--bars", options.bars_path, "Bars, comma-separated, with a header")
      ->type_name("FILE.csv")
      ->required();
  command.add_option("--calendar", options.calendar_path, "The security's trading calendar, JSON")
      ->type_name("FILE");
  command
      .add_option("--reference", options.references,
                  "Data of another security or period that the script reads, such as "
                  "'600000|11=other.csv'; may be repeated")
      ->type_name("SOURCE|FIELD=FILE")
      ->expected(1)
      ->take_all();
}

void add_run(CLI::App& app, Options& options) {
  CLI::App& run = *app.add_subcommand("run", "Run a script over bars and print its lines");
  add_bar_options(run, options);
  run.add_option("--last", options.last, "How many bars to print")
      ->type_name("N")
      ->capture_default_str();
  run.add_flag("--json", options.as_json,
               "Print all bars, the report, the findings and the drawings as JSON");
  run.add_option("--from", options.first_row, "First row to calculate, 0 the oldest bar")
      ->type_name("ROW")
      ->capture_default_str();
  run.add_flag("--fire", options.fire_signals, "Raise notices and trade signals, and print them");
}

void add_chart(CLI::App& app, Options& options) {
  CLI::App& chart = *app.add_subcommand("chart", "Draw the bars and what a script draws");
  add_bar_options(chart, options);
  chart.add_option("--out", options.picture_path, "The picture")
      ->type_name("FILE.svg|FILE.png")
      ->required();
  chart.add_option("--last", options.last, "How many bars to draw, 2000 at most; 120 by default")
      ->type_name("N");
  chart
      .add_option("--size", options.picture_size, "Width and height in pixels; 1200x800 by default")
      ->type_name("WxH")
      ->delimiter('x')
      ->expected(2)
      ->check(CLI::Range(200, 8000));
}

void add_scan(CLI::App& app, ScanOptions& options) {
  CLI::App& scan = *app.add_subcommand(
      "scan",
      "Run a script over many securities, a file of bars each, and print the latest values");
  scan.add_option("SCRIPT", options.paths,
                  "File with the script; then files of bars, or folders with such files (*.csv). A "
                  "security has the name of its file")
      ->type_name("FILES|FOLDERS...")
      ->required();
  scan.add_option("-e", options.script_text, "The script itself, in place of a file")
      ->type_name("TEXT");
  scan.add_option(
          "--where", options.condition,
          "Only bars at which this expression over the script's lines holds, such as 'BUY=1'")
      ->type_name("TEXT");
  scan.add_option("--last", options.last, "How many bars of each security to look at")
      ->type_name("N")
      ->capture_default_str();
  scan.add_option("--set", options.parameters, "A parameter of the script; may be repeated")
      ->type_name("NAME=NUMBER")
      ->expected(1)
      ->take_all();
  scan.add_option("--period", options.period, "Period code of the bars")
      ->type_name("CODE")
      ->default_str("0x4000");
  scan.add_option("--market", options.market, "The market of all securities")->type_name("WORD");
  scan.add_option("--jobs", options.jobs,
                  "How many files at a time; by default as many as there are "
                  "processors")
      ->type_name("K");
  scan.add_option("--sort", options.sort_line, "Sort by the values of this line, smallest first")
      ->type_name("NAME");
  scan.add_flag("--reverse", options.reverse, "Sort the other way round");
  auto* const csv = scan.add_flag("--csv", options.as_csv, "Print comma-separated values");
  scan.add_flag("--json", options.as_json, "Print JSON")->excludes(csv);
}

int run_command(const CLI::App& app, const Options& options, const ScanOptions& scan) {
  const CLI::App& command = *app.get_subcommands().front();
  if (command.get_name() == "scan") return scan_files(scan);
  if (command.count("SCRIPT") + command.count("-e") == 0) {
    std::cerr << "quor: no script: give a file or -e 'TEXT'\n";
    return exit_usage;
  }
  if (command.get_name() == "check") return check_script(options);
  if (command.get_name() == "run") return run_script(options);
  Options picture = options;
  if (command.count("--last") == 0) picture.last = 120;
  return draw_script(picture);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    quor_host::prepare_output();
    std::vector<std::string> arguments = quor_host::utf8_arguments(argc, argv);
    std::ranges::reverse(arguments);  // the order that the parser wants them in
    CLI::App app("Compiles indicator scripts and runs them over bars of a security.", "quor");
    Options options;
    ScanOptions scan;
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on any system
    app.footer(footer);
    app.set_version_flag("--version", "quor " QUOR_VERSION);
    add_check(app, options);
    add_run(app, options);
    add_chart(app, options);
    add_scan(app, scan);
    try {
      app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
      return app.exit(error) == 0 ? 0 : exit_usage;
    }
    return run_command(app, options, scan);
  } catch (const std::exception& error) {
    std::cerr << "quor: " << error.what() << '\n';
    return exit_failure;
  }
}
