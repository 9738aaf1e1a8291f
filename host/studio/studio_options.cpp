#include <CLI/CLI.hpp>

#include "studio.h"

namespace quor_host {
namespace {

constexpr auto examples = R"(
Examples: the sample bars; the securities of a folder, with a script to begin with.

  quor studio
  quor studio averages.quor --bars bars/

The page calculates by itself; --export writes it into a folder for any server of files. It is served on this machine's own address alone, and the link holds a secret that serves one
browser. The studio reads the bars that it is given, and saves scripts beside SCRIPT, or without one
beside the bars.)";

}  // namespace

void add_studio(CLI::App& app, StudioOptions& options) {
  CLI::App& studio =
      *app.add_subcommand("studio", "Open a page to write scripts, see the chart and play bars");
  studio.footer(examples);
  studio.add_option("SCRIPT", options.script_path, "File with a script to begin with")
      ->type_name("");
  studio
      .add_option("--bars", options.bars_path,
                  "A file of bars, or a folder with such files (*.csv), by default sample bars")
      ->type_name("FILE|FOLDER");
  studio
      .add_option("--port", options.port,
                  "The port, by default " + std::to_string(usual_port) + " or one that is free")
      ->type_name("N")
      ->check(CLI::Range(0, 65535));
  studio.add_flag("--no-open", options.no_open, "Print the link only, don't open the browser");
  studio.add_option("--export", options.export_path, "Write the page into a folder and end")
      ->type_name("FOLDER");
  // For those who work on the page, and for tests.
  studio.add_option("--page", options.page_path, "")->group("");
}

}  // namespace quor_host
