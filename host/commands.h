// What the program can do with one script.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "chart/surface.h"
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

/// How a PNG is drawn, if at all.
struct PngMeans {
  MakeSurface* make = nullptr;    ///< null if this program draws none
  const char* program = nullptr;  ///< what draws it in this one's place, by its path from this
                                  ///< one's folder; null if there is none
  char** arguments = nullptr;     ///< the whole command line
};

/// Each prints what there is to say about the script and gives the exit status: 1 if it has an
/// error, or a warning while the user is strict. Each throws HostError for any other.
/// Of several scripts, those of folders (*.quor) with them, `check` says in the end how many are
/// sound.
int check_scripts(const CheckOptions& options);
int run_script(const RunOptions& options);
int draw_script(const DrawOptions& options, const PngMeans& png);

}  // namespace quor_host
