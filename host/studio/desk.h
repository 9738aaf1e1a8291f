// What one page works on: bars, a script over them, the place in play, a scan.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "../bars.h"
#include "../scan_job.h"
#include "drawing.h"
#include "run.h"

namespace quor_host {

/// Bars with what a page wants to know of them; keys ascend.
struct Security {
  std::string name;
  Bars bars;
  uint32_t period = 0;
  bool is_period_guessed = false;
};

/// Where play is.
struct Play {
  Bars bars;         ///< those that came, the last one may be forming
  size_t row = 0;    ///< of the bar that forms or comes next
  size_t tick = 0;   ///< how many ticks of it came
  size_t ticks = 1;  ///< of a whole bar
};

struct Desk {
  /// The bars that are seen; none without a security.
  const Bars& bars() const;
  size_t row_count() const { return bars().keys.size(); }
  /// The values of a bar field or of a column of the script; none for what isn't there.
  std::span<const double> cells(uint32_t column) const;

  std::mutex lock;        ///< guards all down to `play`
  uint64_t revision = 0;  ///< of what is seen: grows whenever values or rows become others
  std::shared_ptr<const Security> security;
  std::optional<Task> task;  ///< the last one that was sent
  std::unique_ptr<Run> run;  ///< of the last sound script
  Drawing drawing;
  std::optional<Play> play;

  std::mutex scan_lock;  ///< guards the pointer to the scan
  std::shared_ptr<Scan> scan;
  std::atomic<bool> is_scan_cancelled{false};

  std::atomic<int> waiting{0};  ///< requests that have or want `lock`
  std::atomic<std::chrono::steady_clock::time_point> used{std::chrono::steady_clock::now()};
};

/// A request's time at the desk. Throws Refusal if too many wait already.
class Turn {
 public:
  explicit Turn(Desk& desk);
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  Desk& desk_;
  std::unique_lock<std::mutex> lock_;
};

}  // namespace quor_host
