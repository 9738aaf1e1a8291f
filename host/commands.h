// What the program can do with one script.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "options/chart_options.h"
#include "options/options.h"

namespace quor_host {

struct CheckOptions {
  ScriptOptions script;
  std::vector<std::string> paths;  ///< files and folders
  bool as_json = false;
};

struct RunOptions {
  ScriptOptions script;
  BarOptions bars;
  LineOptions lines;
  std::optional<size_t> last;  ///< bars to print; 10 in a table, else all
  bool as_json = false;
  bool as_csv = false;
  uint32_t first_row = 0;
  bool fire_signals = false;
};

struct DrawOptions {
  ScriptOptions script;
  BarOptions bars;
  ChartOptions chart;
};

/// Each prints what there is to say about the script and gives the exit status: 1 if it has an
/// error, or a warning while the user is strict. Each throws HostError for any other.
/// Of several scripts, those of folders (*.quor) with them, `check` says in the end how many are
/// sound.
int check_scripts(const CheckOptions& options);
int run_script(const RunOptions& options);
/// Only where the program was built with the means to draw. `arguments` is the whole command line,
/// for a program of its own that draws.
int draw_script(const DrawOptions& options, char** arguments);

}  // namespace quor_host
