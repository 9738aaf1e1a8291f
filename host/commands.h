// What the program can do.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "session.h"

namespace quor_host {

/// What the user asks for.
struct Options {
  std::string script_path;
  std::string script_text;  ///< stands instead of the file
  std::string parameters_path;
  std::string lines_path;
  Subject subject;
  std::vector<std::string> market_constants;  ///< "KEY=VALUE"
  bool is_trading = false;
  bool as_json = false;
  bool fire_signals = false;
  std::string calendar_path;
  std::vector<std::string> references;  ///< "SOURCE|FIELD=FILE.csv"
  std::string bars_path;
  size_t last = 10;
  uint32_t first_row = 0;
  std::string picture_path;
  std::vector<int> picture_size = {1200, 800};
};

/// Each gives the exit status, 1 if the script has an error, and throws HostError for any other.
int check_script(const Options& options);
int run_script(const Options& options);
/// `arguments` is the whole command line, for a program of its own that draws.
int draw_script(const Options& options, char** arguments);

}  // namespace quor_host
