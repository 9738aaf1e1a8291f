#include "scan_job.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <mutex>
#include <thread>

#include "bars.h"
#include "errors.h"
#include "fields.h"
#include "scan_findings.h"

namespace quor_host {
namespace {

using Clock = std::chrono::steady_clock;
using quor::engine::Field;
using quor::engine::Script;

std::atomic<bool> stop_asked{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set it");

/// For its life Ctrl-C asks the scan to stop; pressed again it ends the program.
class StopOnInterrupt {
 public:
  StopOnInterrupt() {
    stop_asked = false;
    before_ = std::signal(SIGINT, ask);
  }
  ~StopOnInterrupt() { std::signal(SIGINT, before_); }
  StopOnInterrupt(const StopOnInterrupt&) = delete;
  StopOnInterrupt& operator=(const StopOnInterrupt&) = delete;

 private:
  static void ask(int number) {
    stop_asked = true;
    std::signal(number, SIG_DFL);
  }

  void (*before_)(int) = SIG_DFL;
};

/// What a thread found out about one file.
struct Outcome {
  std::vector<ScanRow> rows;
  std::string reason;  ///< of a failure
  bool done = false;
};

/// One script and its thread's way through the files.
class Worker {
 public:
  explicit Worker(const ScanJob& job)
      : job_(job), subject_(job.settings.subject), script_(job.script, job.settings) {}

  Outcome scan(const std::string& path) {
    Outcome outcome;
    try {
      scan(path, outcome.rows);
    } catch (const HostError& error) {
      outcome.reason = error.what();
    } catch (const std::exception& error) {
      outcome.reason = path + ": " + error.what();
    }
    outcome.done = true;
    return outcome;
  }

 private:
  void scan(const std::string& path, std::vector<ScanRow>& rows) {
    const Bars bars = read_bars(path);
    subject_.security = security_of(path);
    script_.restart(subject_);
    feed(bars, path);
    if (script_.calculate()) throw HostError(path + ": " + error_text(findings_of(script_)));
    take_rows(rows);
  }

  void feed(const Bars& bars, const std::string& path) {
    fields_.clear();
    for (const uint32_t id : script_.report().fields) {
      const auto column = bars.columns.find(id);
      if (column != bars.columns.end()) {
        fields_.push_back({id, column->second});
      } else if (id != field_time && id != field_of_notices) {
        throw HostError(path + ": no column for " + field_text(id) + ", which the script reads");
      }
    }
    script_.set_rows(bars.keys, fields_);
  }

  void take_rows(std::vector<ScanRow>& rows) const {
    const uint32_t count = script_.row_count();
    const auto first = static_cast<uint32_t>(count - std::min<size_t>(count, job_.last));
    for (uint32_t row = first; row < count; ++row) {
      if (!holds(row)) continue;
      ScanRow& found = rows.emplace_back();
      found.security = subject_.security;
      found.key = script_.key_of(row);
      for (const auto& line : script_.lines()) {
        found.values.push_back(script_.column(line.column)[row]);
      }
    }
  }

  /// A null doesn't hold.
  bool holds(uint32_t row) const {
    if (!script_.has_condition()) return true;
    const double value = script_.column(script_.condition_column())[row];
    return value == value && value != 0.0;
  }

  /// Reported for every script with a notice, and known to no file.
  static constexpr uint32_t field_of_notices = 199;

  const ScanJob& job_;
  quor::engine::Subject subject_;
  Script script_;
  std::vector<Field> fields_;
};

std::string clock_text(std::chrono::seconds time) {
  const auto seconds = time.count() % 60;
  return std::to_string(time.count() / 60) + (seconds < 10 ? ":0" : ":") + std::to_string(seconds);
}

/// The files of a scan, handed out to its threads.
class Scan {
 public:
  explicit Scan(const ScanJob& job) : job_(job), outcomes_(job.files.size()) {}

  ScanResult run() {
    const StopOnInterrupt stop;
    std::vector<std::thread> threads;
    for (size_t i = 0; i < job_.threads; ++i) threads.emplace_back([this] { work(); });
    watch();
    for (std::thread& thread : threads) thread.join();
    return collect();
  }

 private:
  void work() {
    try {
      Worker worker(job_);
      for (size_t i = next_++; i < job_.files.size() && !stop_asked; i = next_++) {
        outcomes_[i] = worker.scan(job_.files[i]);
        ++done_;
      }
    } catch (...) {
      const std::lock_guard guard(lock_);
      fault_ = std::current_exception();
    }
    const std::lock_guard guard(lock_);
    ++ended_;
    changed_.notify_one();
  }

  void watch() {
    const Clock::time_point start = Clock::now();
    std::unique_lock guard(lock_);
    const auto all_ended = [this] { return ended_ == job_.threads; };
    while (!changed_.wait_for(guard, std::chrono::milliseconds(200), all_ended)) {
      if (job_.shows_progress) show_progress(Clock::now() - start);
    }
    if (job_.shows_progress) std::cerr << "\r\033[K" << std::flush;
  }

  void show_progress(Clock::duration elapsed) const {
    const size_t done = done_;
    std::cerr << '\r' << done << " of " << job_.files.size() << " files";
    if (done > 0) {
      const auto left = elapsed * (job_.files.size() - done) / done;
      std::cerr << ", " << clock_text(std::chrono::duration_cast<std::chrono::seconds>(left))
                << " left";
    }
    std::cerr << "\033[K" << std::flush;
  }

  ScanResult collect() {
    if (fault_) std::rethrow_exception(fault_);
    ScanResult result;
    for (size_t i = 0; i < outcomes_.size(); ++i) {
      Outcome& outcome = outcomes_[i];
      if (!outcome.done) continue;
      ++result.done;
      if (!outcome.reason.empty()) result.failures.push_back({job_.files[i], outcome.reason});
      std::ranges::move(outcome.rows, std::back_inserter(result.rows));
    }
    return result;
  }

  const ScanJob& job_;
  std::vector<Outcome> outcomes_;  ///< of each file, written by the thread that has it
  std::atomic<size_t> next_{0};
  std::atomic<size_t> done_{0};
  std::mutex lock_;  ///< guards the two below
  size_t ended_ = 0;
  std::exception_ptr fault_;
  std::condition_variable changed_;
};

}  // namespace

ScanResult run_scan(const ScanJob& job) { return Scan(job).run(); }

}  // namespace quor_host
