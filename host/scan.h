// `quor scan`: one script over many securities.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quor_host {

struct ScanOptions {
  std::vector<std::string> paths;  ///< the script, unless its text is given; then files and folders
  std::string script_text;
  std::string condition;                ///< over the script's lines; empty for all bars
  std::vector<std::string> parameters;  ///< "NAME=NUMBER"
  std::string period;                   ///< as the user names it; empty if the bars tell it
  std::string market;
  std::string calendar_path;
  std::vector<std::string> market_constants;  ///< "KEY=NUMBER", of all securities
  size_t last = 1;
  size_t jobs = 0;  ///< 0 for as many as there are processors
  std::string sort_line;
  bool reverse = false;
  bool as_csv = false;
  bool as_json = false;
};

/// Gives the exit status: 1 if the script has an error or a file failed, 130 if the user stopped
/// it; what was done by then is printed. Throws HostError for a wrong option.
int scan_files(const ScanOptions& options);

}  // namespace quor_host
