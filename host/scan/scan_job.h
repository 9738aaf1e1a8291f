// The work of a scan: files to rows, on several threads.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "../input/references.h"
#include "bars/bars.h"
#include "engine/engine.h"

namespace quor_host {

/// What a security came to at one of its last bars.
struct ScanRow {
  std::string security;
  int64_t key = 0;
  std::vector<double> values;  ///< of the script's lines, in their order
};

/// What a file came to.
struct ScanOutcome {
  size_t file = 0;  ///< among the files of the job
  std::vector<ScanRow> rows;
  std::string reason;               ///< of a failure; empty for none
  uint32_t period = 0;              ///< of the bars; 0 if they could not be read
  std::vector<std::string> doubts;  ///< about the bars
};

struct ScanJob {
  std::string script;
  quor::engine::Settings settings;
  bool infers_period = false;  ///< of each file by its bars, which then beats that of the settings
  std::vector<std::string> files;
  quor_bars::Naming naming;                      ///< of all files
  std::shared_ptr<const References> references;  ///< the same for all; null for none
  size_t last = 1;
  size_t threads = 1;
};

/// A job under way on threads of its own. Each member may be called from any thread.
class Scan {
 public:
  explicit Scan(ScanJob job);
  /// Stops and waits for the threads.
  ~Scan();
  Scan(const Scan&) = delete;
  Scan& operator=(const Scan&) = delete;

  const ScanJob& job() const { return job_; }
  /// Files that are in work are finished, no other one is begun.
  void stop() { stopped_ = true; }
  /// Waits so long at most. True if all threads have ended. Throws what ended a thread before time.
  bool wait(std::chrono::milliseconds time);
  /// The outcomes from the place `first` on, in the order in which they came.
  std::vector<ScanOutcome> outcomes(size_t first = 0) const;
  size_t done() const;

 private:
  void work();

  ScanJob job_;
  std::atomic<bool> stopped_{false};
  std::atomic<size_t> next_{0};
  mutable std::mutex lock_;  ///< guards the three below
  std::vector<ScanOutcome> outcomes_;
  size_t ended_ = 0;
  std::exception_ptr fault_;
  std::condition_variable changed_;
  std::vector<std::thread> threads_;
};

/// The name of a security: that of its file without the ending, .csv.gz too.
std::string security_of(const std::string& path);

/// Files as they are, folders as the files in them that end in .csv or .csv.gz, by name. Throws
/// HostError for one that isn't there and for a folder without such files.
std::vector<std::string> bar_files(const std::vector<std::string>& paths);

}  // namespace quor_host
