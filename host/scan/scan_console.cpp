#include "scan_console.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include "../output/console.h"
#include "../process/interrupt.h"

namespace quor_host {
namespace {

using Clock = std::chrono::steady_clock;

std::string clock_text(std::chrono::seconds time) {
  const auto seconds = time.count() % 60;
  return std::to_string(time.count() / 60) + (seconds < 10 ? ":0" : ":") + std::to_string(seconds);
}

void show_progress(const Scan& scan, Clock::duration elapsed) {
  const size_t done = scan.done();
  const size_t all = scan.job().files.size();
  std::cerr << '\r' << done << " of " << all << " files";
  if (done > 0) {
    const auto left = elapsed * (all - done) / done;
    std::cerr << ", " << clock_text(std::chrono::duration_cast<std::chrono::seconds>(left))
              << " left";
  }
  std::cerr << "\033[K" << std::flush;
}

ScanResult result_of(const Scan& scan) {
  std::vector<ScanOutcome> outcomes = scan.outcomes();
  std::ranges::sort(outcomes, {}, &ScanOutcome::file);
  ScanResult result;
  result.done = outcomes.size();
  for (ScanOutcome& outcome : outcomes) {
    if (!outcome.reason.empty()) {
      result.failures.push_back({scan.job().files[outcome.file], outcome.reason});
    }
    if (outcome.period != 0) ++result.periods[outcome.period];
    std::ranges::move(outcome.doubts, std::back_inserter(result.doubts));
    std::ranges::move(outcome.rows, std::back_inserter(result.rows));
  }
  return result;
}

}  // namespace

ScanResult run_scan(const ScanJob& job) {
  const StopOnInterrupt interrupt;
  const bool shows_progress = is_watched();
  const Clock::time_point start = Clock::now();
  Scan scan(job);
  while (!scan.wait(std::chrono::milliseconds(200))) {
    if (StopOnInterrupt::has_come()) scan.stop();
    if (shows_progress) show_progress(scan, Clock::now() - start);
  }
  if (shows_progress) std::cerr << "\r\033[K" << std::flush;
  return result_of(scan);
}

}  // namespace quor_host
