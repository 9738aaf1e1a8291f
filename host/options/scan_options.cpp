#include <CLI/CLI.hpp>

#include "../scan/scan.h"
#include "option_checks.h"

namespace quor_host {

namespace {

constexpr uint64_t most_jobs = 1024;

constexpr auto scan_examples = R"(
Example: the securities of a folder whose close has come to stand above its average.

  quor scan -e 'BUY:CROSS(C,MA(C,20));' bars/ --where 'BUY=1' --last 5
)";

}  // namespace

void add_scan(CLI::App& app, ScanOptions& options) {
  CLI::App& scan = *app.add_subcommand(
      "scan",
      "Run a script over many securities, a file of bars each, and print the latest values");
  scan.footer(scan_examples);
  scan.add_option("SCRIPT", options.paths,
                  "File with the script; then files of bars, or folders with such files (*.csv, "
                  "*.csv.gz). A security has the name of its file")
      ->type_name("FILES|FOLDERS...")
      ->required();
  add_script_text(scan, options.script);
  add_setting_options(scan, options.script);
  add_bar_options(scan, options.script, options.bars);
  add_line_options(scan, options.lines);
  scan.add_option(
          "-w,--where", options.condition,
          "Only bars at which this expression over the script's lines holds, such as 'BUY=1'")
      ->type_name("TEXT")
      ->check(some_text("expression"));
  scan.add_option("-n,--last", options.last, "How many bars of each security to look at")
      ->type_name("N")
      ->transform(whole_number(1))
      ->capture_default_str();
  scan.add_option("-j,--jobs", options.jobs,
                  "How many files at a time; by default as many as there are "
                  "processors")
      ->type_name("K")
      ->transform(whole_number(1, most_jobs));
  scan.add_option("--sort", options.sort_line, "Sort by the values of this line, smallest first")
      ->type_name("NAME");
  scan.add_flag("-r,--reverse", options.reverse, "Sort the other way round");
  auto* const csv = scan.add_flag("--csv", options.as_csv, "Print comma-separated values");
  scan.add_flag("--json", options.as_json, "Print JSON")->excludes(csv);
}

}  // namespace quor_host
