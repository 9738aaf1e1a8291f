#include "scan_job.h"

#include <algorithm>
#include <utility>

#include "../errors.h"
#include "../input/bars.h"
#include "../input/fields.h"
#include "../options/period.h"
#include "../script_run.h"
#include "scan_findings.h"

namespace quor_host {
namespace {

using quor::engine::Script;

/// One script and its thread's way through the files.
class Worker {
 public:
  explicit Worker(const ScanJob& job)
      : job_(job), subject_(job.settings.subject), script_(job.script, job.settings) {}

  ScanOutcome scan(size_t file) {
    ScanOutcome outcome{file, {}, {}, 0, {}};
    const std::string& path = job_.files[file];
    try {
      scan(path, outcome);
    } catch (const HostError& error) {
      outcome.reason = error.what();
    } catch (const std::exception& error) {
      outcome.reason = path + ": " + error.what();
    }
    return outcome;
  }

 private:
  void scan(const std::string& path, ScanOutcome& outcome) {
    Bars bars = read_bars(path, job_.naming);
    outcome.doubts = std::move(bars.doubts);
    subject_.security = security_of(path);
    if (job_.infers_period) subject_.period = infer_period(bars.keys).value_or(period_of_a_day);
    outcome.period = subject_.period;
    script_.restart(subject_);
    if (script_.report().failure) {
      throw HostError(path + ": " + error_text(findings_of(script_)));
    }
    const auto missing = feed(script_, bars, references_at(bars.keys));
    if (!missing.empty()) {
      throw HostError(path + ": no column for " + field_text(missing.front()) +
                      ", which the script reads");
    }
    bars = {};
    if (script_.calculate()) throw HostError(path + ": " + error_text(findings_of(script_)));
    take_rows(outcome.rows);
  }

  std::vector<FilledColumn> references_at(std::span<const int64_t> keys) const {
    if (job_.references == nullptr) return {};
    return job_.references->columns_for(script_.report(), keys);
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

  const ScanJob& job_;
  quor::engine::Subject subject_;
  Script script_;
};

}  // namespace

Scan::Scan(ScanJob job) : job_(std::move(job)) {
  for (size_t i = 0; i < job_.threads; ++i) threads_.emplace_back([this] { work(); });
}

Scan::~Scan() {
  stop();
  for (std::thread& thread : threads_) thread.join();
}

void Scan::work() {
  try {
    Worker worker(job_);
    for (size_t i = next_++; i < job_.files.size() && !stopped_; i = next_++) {
      ScanOutcome outcome = worker.scan(i);
      const std::lock_guard guard(lock_);
      outcomes_.push_back(std::move(outcome));
    }
  } catch (...) {
    const std::lock_guard guard(lock_);
    fault_ = std::current_exception();
  }
  const std::lock_guard guard(lock_);
  ++ended_;
  changed_.notify_all();
}

bool Scan::wait(std::chrono::milliseconds time) {
  std::unique_lock guard(lock_);
  const bool ended = changed_.wait_for(guard, time, [this] { return ended_ == job_.threads; });
  if (ended && fault_) std::rethrow_exception(fault_);
  return ended;
}

std::vector<ScanOutcome> Scan::outcomes(size_t first) const {
  const std::lock_guard guard(lock_);
  const auto begin = outcomes_.begin() + static_cast<ptrdiff_t>(std::min(first, outcomes_.size()));
  return {begin, outcomes_.end()};
}

size_t Scan::done() const {
  const std::lock_guard guard(lock_);
  return outcomes_.size();
}

}  // namespace quor_host
