#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "option_checks.h"

namespace quor_host {
namespace {

/// What stands between commas.
std::vector<std::string> parts_of(std::string_view text) {
  std::vector<std::string> parts;
  for (;;) {
    const size_t end = std::min(text.find(','), text.size());
    parts.emplace_back(text.substr(0, end));
    if (end == text.size()) return parts;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

void add_script_text(CLI::App& command, ScriptOptions& options) {
  command.add_option("-e", options.text, "The script itself, in place of a file")
      ->type_name("TEXT")
      ->check(some_text("script"));
}

void add_script_options(CLI::App& command, ScriptOptions& options) {
  add_script_text(command, options);
  command.add_option("SCRIPT", options.path, "File with the script, - for a pipe")->type_name("");
  add_setting_options(command, options);
  add_security_option(command, options);
}

void add_setting_options(CLI::App& command, ScriptOptions& options) {
  command
      .add_option("--params", options.parameters_path,
                  "JSON: [{\"PARAM_NAME\":\"N\",\"DEFAULT\":5}, ...]")
      ->type_name("FILE");
  command.add_option("-s,--set", options.settings, "The value of a parameter; may be repeated")
      ->type_name("NAME=NUMBER")
      ->expected(1)
      ->take_all();
  command
      .add_option(
          "-p,--period", options.period,
          "Period of the bars: 5min, 15s, 2hour, day, week, month, quarter, year, or a code "
          "such as 0x3005; by default what the distances of the bars tell, else day")
      ->type_name("PERIOD")
      ->check(period());
  command.add_option("--market", options.market, "The market of the security")->type_name("WORD");
  command.add_option("--timezone", options.time_zone, "Its time zone; calendars bring their own")
      ->type_name("TEXT")
      ->capture_default_str();
  command
      .add_option("--extra", options.market_constants,
                  "A market constant: MINPRICE, UNIT or SHARECOUNTPERUNIT; may be repeated")
      ->type_name("KEY=NUMBER")
      ->expected(1)
      ->take_all();
  command.add_flag("--trading", options.is_trading, "The market is open now");
  command.add_flag("--strict", options.is_strict, "Exit with status 1 for a warning, too");
  command.add_flag("-q,--quiet", options.is_quiet, "Tell errors alone: no warnings, no notes");
}

void add_security_option(CLI::App& command, ScriptOptions& options) {
  command.add_option("--code", options.security, "Code of the security")->type_name("SECURITY");
  command
      .add_option("--lines", options.lines_path,
                  "JSON: [{\"LINE_NAME\":\"MA5\",\"COLOR_KEY\":\"...\",\"LINE_THICK\":1}, ...]")
      ->type_name("FILE");
}

void add_bar_path(CLI::App& command, BarOptions& options) {
  auto* const bars =
      command
          .add_option("-b,--bars", options.path,
                      "Bars, comma-separated, with a header, perhaps packed by gzip; - for bars "
                      "from a pipe")
          ->type_name("FILE.csv");
  command.add_option("BARS", options.path, "The same without the word --bars, behind a script")
      ->type_name("")
      ->excludes(bars);
}

void add_bar_options(CLI::App& command, ScriptOptions& script, BarOptions& options) {
  command
      .add_option("--column", options.form.columns,
                  "The column of a field that stands under another name, such as "
                  "close=\"Adj Close\"; may be repeated")
      ->type_name("FIELD=COLUMN")
      ->expected(1)
      ->take_all();
  command
      .add_option(
          "-d,--delimiter", options.form.delimiter,
          "What parts the cells: one character, or tab; by default what the first line tells")
      ->type_name("CHARACTER");
  command.add_option("--calendar", script.calendar_path, "The trading calendar, JSON")
      ->type_name("FILE");
  command
      .add_option("--reference", options.references,
                  "Data of another security or period that the script reads, such as "
                  "'600000=other.csv' or 'DAY1|CLOSE=days.csv'; may be repeated")
      ->type_name("SOURCE=FILE")
      ->expected(1)
      ->take_all();
  command.add_flag("--forming", options.takes_forming,
                   "Of a longer period each bar shows the one that it lies in, whose end it can't "
                   "know yet; by default the last finished one");
}

void add_line_options(CLI::App& command, LineOptions& options) {
  auto* const all = command.add_flag("-a,--all", options.all, "Lines declared by ':=', too");
  command
      .add_option_function<std::string>(
          "--columns", [&options](const std::string& names) { options.columns = parts_of(names); },
          "These lines alone, in this order")
      ->type_name("NAME,NAME")
      ->excludes(all);
}

}  // namespace quor_host
