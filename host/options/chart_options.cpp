#include "chart_options.h"

#include <CLI/CLI.hpp>

#include "option_checks.h"

namespace quor_host {

void add_chart_options(CLI::App& command, ChartOptions& options) {
  command.add_option("-o,--out", options.path, "The picture; - for SVG on the standard output")
      ->type_name("FILE.svg|FILE.png")
      ->required();
  command.add_option("-n,--last", options.last, "How many bars to draw")
      ->type_name("N")
      ->transform(whole_number(1))
      ->capture_default_str();
  command.add_option("--size", options.size, "Width and height in pixels")
      ->type_name("WxH")
      ->default_str("1200x800")
      ->delimiter('x')
      ->expected(2)
      ->check(CLI::Range(200, 8000));
  command.add_option("--theme", options.theme, "Colours: light or dark")
      ->type_name("NAME")
      ->check(CLI::IsMember({"light", "dark"}))
      ->capture_default_str();
  command.add_flag("--no-volume", options.no_volume,
                   "Leave out the volume, which is drawn where a script has no panel of its own");
}

}  // namespace quor_host
