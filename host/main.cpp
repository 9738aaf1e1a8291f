// quor: compiles and runs scripts from the command line.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <limits>

#include "commands.h"
#include "console.h"
#include "format.h"
#include "help.h"
#include "lsp/lsp.h"
#include "option_checks.h"
#include "paths.h"
#include "scan.h"
#ifdef QUOR_STUDIO
#include "studio/studio.h"
#endif
#include "usage.h"

namespace {

using quor_host::Options;
using quor_host::ScanOptions;

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;
constexpr uint64_t most_jobs = 1024;

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

constexpr auto scan_examples = R"(
Example: the securities of a folder whose close has come to stand above its average.

  quor scan -e 'BUY:CROSS(C,MA(C,20));' bars/ --where 'BUY=1' --last 5
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

/// Of `check` several scripts may be given.
CLI::Option* add_script_path(CLI::App& command, Options& options, bool takes_several) {
  if (!takes_several)
    return command.add_option("SCRIPT", options.script_path, "File with the script, - for a pipe");
  return command.add_option(
      "SCRIPT", options.script_paths,
      "Files with scripts, or folders with such files (*.quor); - for a pipe");
}

void add_script_options(CLI::App& command, Options& options, bool takes_several = false) {
  auto* const path = add_script_path(command, options, takes_several);
  auto* const text = command.add_option("-e", options.script_text, "The script itself");
  path->type_name("");
  text->type_name("TEXT")->excludes(path)->check(quor_host::some_text("script"));
  command
      .add_option("--params", options.parameters_path,
                  "JSON: [{\"PARAM_NAME\":\"N\",\"DEFAULT\":5}, ...]")
      ->type_name("FILE");
  command.add_option("--set", options.settings, "The value of a parameter; may be repeated")
      ->type_name("NAME=NUMBER")
      ->expected(1)
      ->take_all();
  command
      .add_option("--lines", options.lines_path,
                  "JSON: [{\"LINE_NAME\":\"MA5\",\"COLOR_KEY\":\"...\",\"LINE_THICK\":1}, ...]")
      ->type_name("FILE");
  command
      .add_option(
          "--period", options.period,
          "Period of the bars: 5min, 15s, 2hour, day, week, month, quarter, year, or a code "
          "such as 0x3005; by default what the distances of the bars tell, else day")
      ->type_name("PERIOD")
      ->check(quor_host::period());
  command.add_option("--code", options.subject.security, "Code of the security")
      ->type_name("SECURITY");
  command.add_option("--market", options.subject.market, "Its market")->type_name("WORD");
  command
      .add_option("--timezone", options.subject.time_zone,
                  "Its time zone; calendars bring their own")
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
  check.footer(check_footer);
  add_script_options(check, options, true);
  check.add_flag("--json", options.as_json, "Print the report and the findings as JSON");
}

/// What a command that calculates takes.
void add_bar_options(CLI::App& command, Options& options) {
  add_script_options(command, options);
  auto* const bars = command
                         .add_option("--bars", options.bars_path,
                                     "Bars, comma-separated, with a header; - for bars from a pipe")
                         ->type_name("FILE.csv");
  command
      .add_option("BARS", options.bars_path, "The same without the word --bars, behind a script")
      ->type_name("")
      ->excludes(bars);
  command
      .add_option("--column", options.columns,
                  "The column of a field that stands under another name, such as "
                  "close=\"Adj Close\"; may be repeated")
      ->type_name("FIELD=COLUMN")
      ->expected(1)
      ->take_all();
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
  run.footer(std::string(run_examples) + bars_footer);
  add_bar_options(run, options);
  run.add_option("--last", options.last, "How many bars to print; 10 by default, all with --csv")
      ->type_name("N")
      ->transform(quor_host::whole_number(0));
  auto* const json =
      run.add_flag("--json", options.as_json,
                   "Print all bars, the report, the findings and the drawings as JSON");
  run.add_flag("--csv", options.as_csv,
               "Print comma-separated values in full precision, null as an empty cell")
      ->excludes(json);
  run.add_option("--from", options.first_row, "First row to calculate, 0 the oldest bar")
      ->type_name("ROW")
      ->transform(quor_host::whole_number(0))
      ->capture_default_str();
  run.add_flag("--fire", options.fire_signals, "Raise notices and trade signals, and print them");
}

void add_chart(CLI::App& app, Options& options) {
  CLI::App& chart = *app.add_subcommand("chart", "Draw the bars and what a script draws");
  chart.footer(std::string(chart_examples) + bars_footer);
  add_bar_options(chart, options);
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

void add_scan(CLI::App& app, ScanOptions& options) {
  CLI::App& scan = *app.add_subcommand(
      "scan",
      "Run a script over many securities, a file of bars each, and print the latest values");
  scan.footer(scan_examples);
  scan.add_option("SCRIPT", options.paths,
                  "File with the script; then files of bars, or folders with such files (*.csv). A "
                  "security has the name of its file")
      ->type_name("FILES|FOLDERS...")
      ->required();
  scan.add_option("-e", options.script_text, "The script itself, in place of a file")
      ->type_name("TEXT")
      ->check(quor_host::some_text("script"));
  scan.add_option(
          "--where", options.condition,
          "Only bars at which this expression over the script's lines holds, such as 'BUY=1'")
      ->type_name("TEXT")
      ->check(quor_host::some_text("expression"));
  scan.add_option("--last", options.last, "How many bars of each security to look at")
      ->type_name("N")
      ->transform(quor_host::whole_number(1))
      ->capture_default_str();
  scan.add_option("--set", options.parameters, "A parameter of the script; may be repeated")
      ->type_name("NAME=NUMBER")
      ->expected(1)
      ->take_all();
  scan.add_option("--period", options.period,
                  "Period of the bars: 5min, day, week, ..., or its code; by default what the "
                  "distances of the bars tell in each file, else day")
      ->type_name("PERIOD")
      ->check(quor_host::period());
  scan.add_option("--market", options.market, "The market of all securities")->type_name("WORD");
  scan.add_option("--calendar", options.calendar_path,
                  "The trading calendar of all securities, JSON; wants --market")
      ->type_name("FILE");
  scan.add_option(
          "--extra", options.market_constants,
          "A market constant of all securities: MINPRICE, UNIT or SHARECOUNTPERUNIT; may be "
          "repeated")
      ->type_name("KEY=NUMBER")
      ->expected(1)
      ->take_all();
  scan.add_option("--jobs", options.jobs,
                  "How many files at a time; by default as many as there are "
                  "processors")
      ->type_name("K")
      ->transform(quor_host::whole_number(1, most_jobs));
  scan.add_option("--sort", options.sort_line, "Sort by the values of this line, smallest first")
      ->type_name("NAME");
  scan.add_flag("--reverse", options.reverse, "Sort the other way round");
  auto* const csv = scan.add_flag("--csv", options.as_csv, "Print comma-separated values");
  scan.add_flag("--json", options.as_json, "Print JSON")->excludes(csv);
}

/// How often the option is given; 0 for a command without it.
size_t count(const CLI::App& command, const std::string& option) {
  const CLI::Option* const found = command.get_option_no_throw(option);
  return found == nullptr ? 0 : found->count();
}

int check(Options options) {
  const std::vector<std::string>& paths = options.script_paths;
  const bool is_one = paths.size() < 2 && (paths.empty() || !quor_host::is_folder(paths[0]));
  if (is_one) {
    if (!paths.empty()) options.script_path = paths[0];
    return check_script(options);
  }
  if (options.as_json) {
    std::cerr << "quor: --json is for one script\n";
    return exit_usage;
  }
  return check_scripts(options);
}

int run_command(const CLI::App& command, Options options, [[maybe_unused]] char** argv) {
  if (count(command, "SCRIPT") + count(command, "-e") == 0) {
    std::cerr << "quor: no script: give a file or -e 'TEXT'\n";
    return exit_usage;
  }
  const bool is_check = command.get_name() == "check";
  if (!is_check && options.bars_path.empty()) {
    std::cerr
        << "quor: --bars is missing; write --bars FILE.csv, or --bars - for bars from a pipe\n"
        << "quor " << command.get_name() << " --help tells more\n";
    return exit_usage;
  }
  if (options.script_path == "-" && options.bars_path == "-") {
    std::cerr << "quor: the script and the bars can't both come from the pipe\n";
    return exit_usage;
  }
  if (is_check) return check(options);
  if (command.get_name() == "chart") return draw_script(options, argv);
  if (options.as_csv && count(command, "--last") == 0) {
    options.last = std::numeric_limits<size_t>::max();
  }
  return run_script(options);
}

/// The exit status once all output is written: a full disk must not pass for success.
int finish(int status) {
  if (std::cout.flush()) return status;
  std::cerr << "quor: the output can't be written\n";
  return exit_failure;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    quor_host::prepare_streams();
    const std::vector<std::string> arguments = quor_host::utf8_arguments(argc, argv);
    CLI::App app("Compiles indicator scripts and runs them over bars of a security.", "quor");
    Options options;
    quor_host::HelpOptions help;
    ScanOptions scan;
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // a path may begin with a slash on any system
    app.footer(footer);
    app.set_version_flag("-V,--version", "quor " QUOR_VERSION);
    add_check(app, options);
    add_run(app, options);
    add_chart(app, options);
    add_scan(app, scan);
    quor_host::FormatOptions format;
    add_format(app, format);
    quor_lsp::add_lsp(app);
#ifdef QUOR_STUDIO
    quor_host::StudioOptions studio;
    add_studio(app, studio);
#endif
    add_help(app, help);
    try {
      // The parser takes them from the back.
      app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return finish(app.exit(error));
      std::cerr << "quor: " << quor_host::explain(app, error, arguments) << '\n';
      return exit_usage;
    }
    const CLI::App& command = *app.get_subcommands().front();
    if (command.get_name() == "help") return finish(print_help(app, help) ? 0 : exit_failure);
    if (command.get_name() == "scan") return finish(scan_files(scan));
    if (command.get_name() == "lsp") return quor_lsp::run_lsp();
    if (command.get_name() == "format") return finish(format_scripts(format));
#ifdef QUOR_STUDIO
    if (command.get_name() == "studio") return run_studio(studio);
#endif
    return finish(run_command(command, options, argv));
  } catch (const std::exception& error) {
    std::cerr << "quor: " << error.what() << '\n';
    return exit_failure;
  }
}
