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
  bool is_strict = false;  ///< warnings fail
  bool fire_signals = false;
  std::string calendar_path;
  std::vector<std::string> references;  ///< "SOURCE|FIELD=FILE.csv"
  std::string bars_path;
  size_t last = 10;
  uint32_t first_row = 0;
  std::string picture_path;
  std::vector<int> picture_size = {1200, 800};
};

/// Each prints what there is to say about the script and gives the exit status: 1 if it has an
/// error, or a warning while the user is strict. Each throws HostError for any other.
int check_script(const Options& options);
int run_script(const Options& options);
/// Throws HostError where the program was built without the means to draw.
int draw_script(const Options& options);

}  // namespace quor_host
