// What a watch prints, a bar at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "../script_run.h"
#include "engine/engine.h"

namespace quor_host {

enum class WatchForm { table, csv, json };

class WatchOutput {
 public:
  virtual ~WatchOutput() = default;
  /// How the values of a line look.
  virtual void learn(size_t /*line*/, std::span<const double> /*values*/) {}
  /// The lines at a bar, a new one or one that has changed.
  virtual void show(int64_t key, std::span<const double> values) = 0;
  virtual void tell(const quor::engine::Event& event) = 0;
  /// All that was told is to be seen.
  virtual void flush() = 0;
  /// Nothing else comes.
  virtual void finish() { flush(); }
};

std::unique_ptr<WatchOutput> make_output(WatchForm form, const std::vector<ShownLine>& lines);

}  // namespace quor_host
