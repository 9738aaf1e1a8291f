// What the program can do.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chart_options.h"
#include "session.h"

namespace quor_host {

/// What the user asks for.
struct Options {
  std::string script_path;                ///< "-" for the standard input, as with the bars
  std::vector<std::string> script_paths;  ///< of `check`: files and folders
  std::string script_text;                ///< stands instead of the file
  std::string parameters_path;
  std::vector<std::string> settings;  ///< "NAME=NUMBER"
  std::string lines_path;
  Subject subject;
  std::string period;                         ///< by name or as a code; empty if the bars tell it
  std::vector<std::string> market_constants;  ///< "KEY=VALUE"
  bool is_trading = false;
  bool as_json = false;
  bool as_csv = false;
  bool is_strict = false;  ///< warnings fail
  bool fire_signals = false;
  std::string calendar_path;
  std::vector<std::string> references;  ///< "SOURCE|FIELD=FILE.csv"
  std::string bars_path;
  std::vector<std::string> columns;  ///< "FIELD=COLUMN", of bars under other names
  size_t last = 10;
  uint32_t first_row = 0;
  ChartOptions chart;
};

/// Each prints what there is to say about the script and gives the exit status: 1 if it has an
/// error, or a warning while the user is strict. Each throws HostError for any other.
int check_script(const Options& options);
/// The same for several scripts, those of folders (*.quor) with them: the findings of each, and in
/// the end how many scripts are sound.
int check_scripts(const Options& options);
int run_script(const Options& options);
/// Only where the program was built with the means to draw. `arguments` is the whole command line,
/// for a program of its own that draws.
int draw_script(const Options& options, char** arguments);

}  // namespace quor_host
