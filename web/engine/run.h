// A script over the bars of one security, calculated.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "advice/advice.h"
#include "advice/fixes.h"
#include "engine/engine.h"
#include "host/input/bars.h"
#include "host/panes/records.h"
#include "host/studio/task.h"
#include "surroundings.h"

namespace quor_host {

class Run {
 public:
  /// Compiles. A script with an error takes no bars. What is around must outlive it.
  Run(Task task, const Surroundings& around, uint32_t period);

  const Task& task() const { return task_; }
  bool is_sound() const { return !script_.report().failure; }
  const quor::engine::Script& script() const { return script_; }
  /// The drawing records of the script.
  const std::vector<Record>& records() const { return records_; }
  /// Fields that the script reads and the bars don't have.
  const std::vector<uint32_t>& missing() const { return missing_; }
  /// The notices and signals of `calculate`.
  const std::vector<quor::engine::Event>& events() const { return events_; }

  /// Takes bars, whose keys ascend, in place of those before, and calculates all of them. False for
  /// an error, which the findings tell.
  bool calculate(const Bars& bars);
  /// Takes the last bar, a new one or one that has changed, and calculates that. The events are
  /// those of the bar alone.
  bool calculate_last(const Bars& bars);
  const std::vector<quor::engine::Event>& last_events() const { return script_.events(); }

  /// What there is to say about the script, and about its values if it was calculated.
  std::vector<quor_advice::Finding> findings(const Bars& bars) const;

  /// What mends a finding.
  std::vector<quor_advice::Fix> fixes(const quor_advice::Finding& finding) const;

  /// The values of a column of the script; none for one that it doesn't have.
  std::span<const double> column(uint32_t id) const;

 private:
  void feed(const Bars& bars, size_t first);
  quor_advice::Input input() const;

  Task task_;
  const Surroundings& around_;
  quor::engine::Subject subject_;
  quor::engine::Script script_;
  std::vector<Record> records_;
  std::vector<uint32_t> missing_;
  std::vector<quor::engine::Event> events_;
  bool is_calculated_ = false;
};

}  // namespace quor_host
