// A scan that a person waits for.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scan_job.h"

namespace quor_host {

struct ScanFailure {
  std::string path;
  std::string reason;
};

struct ScanResult {
  std::vector<ScanRow> rows;  ///< in the order of the files, oldest bar first
  std::vector<ScanFailure> failures;
  std::vector<std::string> doubts;     ///< about bars
  std::map<uint32_t, size_t> periods;  ///< how many files have bars of it
  size_t done = 0;                     ///< files, those that failed among them
};

/// Runs until all files are done or the user presses Ctrl-C, with its progress on the error output
/// if that is watched.
ScanResult run_scan(const ScanJob& job);

}  // namespace quor_host
