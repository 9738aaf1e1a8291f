// `quor scan`: one script over many securities.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "../options/options.h"

namespace quor_host {

struct ScanOptions {
  ScriptOptions script;
  BarOptions bars;
  LineOptions lines;
  std::vector<std::string> paths;  ///< the script, unless its text is given; then files and folders
  std::string condition;           ///< over the script's lines; empty for all bars
  size_t last = 1;
  size_t jobs = 0;  ///< 0 for as many as there are processors
  std::string sort_line;
  bool reverse = false;
  bool as_csv = false;
  bool as_json = false;
};

void add_scan(CLI::App& app, ScanOptions& options);

/// Gives the exit status: 1 if the script has an error or a file failed, 130 if the user stopped
/// it; what was done by then is printed. Throws UsageError for a wrong option.
int scan_files(ScanOptions options);

}  // namespace quor_host
