// The work of a scan: files to rows, on several threads.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "engine/engine.h"

namespace quor_host {

/// What a security came to at one of its last bars.
struct ScanRow {
  std::string security;
  int64_t key = 0;
  std::vector<double> values;  ///< of the script's lines, in their order
};

struct ScanFailure {
  std::string path;
  std::string reason;
};

struct ScanResult {
  std::vector<ScanRow> rows;  ///< in the order of the files, oldest bar first
  std::vector<ScanFailure> failures;
  size_t done = 0;  ///< files, those that failed among them
};

struct ScanJob {
  std::string script;
  quor::engine::Settings settings;
  std::vector<std::string> files;
  size_t last = 1;
  size_t threads = 1;
  bool shows_progress = false;
};

/// Runs until all files are done or the user presses Ctrl-C.
ScanResult run_scan(const ScanJob& job);

/// The name of a security: that of its file without the ending.
std::string security_of(const std::string& path);

/// Files as they are, folders as the files in them that end in ".csv", by name. Throws HostError
/// for one that isn't there and for a folder without such files.
std::vector<std::string> bar_files(const std::vector<std::string>& paths);

}  // namespace quor_host
