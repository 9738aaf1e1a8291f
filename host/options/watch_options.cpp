#include <CLI/CLI.hpp>

#include "../watch/watch.h"
#include "option_checks.h"

namespace quor_host {

namespace {

constexpr auto watch_footer = R"(
The first line names the columns, as for quor run. A line whose date is that of the line before
replaces it: the bar that is forming. A line counts once its end has come. It ends with the pipe,
by Ctrl-C, or when the file is gone.

Examples: a file that another program writes; a program that prints bars, for one that reads JSON.

  quor watch samples/kdj.quor --bars bars.csv
  feed | quor watch -e 'A:MA(C,5); CROSS(C,A),BK;' --bars - --json | act
)";

}  // namespace

void add_watch(CLI::App& app, WatchOptions& options) {
  CLI::App& watch = *app.add_subcommand(
      "watch", "Run a script over bars as they come, and print each new or forming bar");
  watch.footer(watch_footer);
  add_script_options(watch, options.script);
  add_bar_path(watch, options.bars);
  add_bar_options(watch, options.script, options.bars);
  add_line_options(watch, options.lines);
  watch
      .add_option("-n,--last", options.last,
                  "How many bars to print of those that the file has at the start")
      ->type_name("N")
      ->transform(whole_number(0))
      ->capture_default_str();
  watch.add_flag("--finished", options.finished_alone,
                 "A bar counts once the next one has begun, so that none is taken back");
  auto* const json = watch.add_flag("--json", options.as_json,
                                    "Print each bar, notice and signal as JSON, one in a line");
  watch
      .add_flag("--csv", options.as_csv,
                "Print comma-separated values in full precision; notices and signals go to the "
                "error output")
      ->excludes(json);
}

}  // namespace quor_host
