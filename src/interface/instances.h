// The live instances of the process and the gate that every call on one of them passes.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "interface/script_parser.h"

namespace quor {

/// An instance with its lock. Shared ownership keeps it alive while a call works, whoever deletes
/// it.
struct Instance {
  std::mutex lock;  ///< guards `parser`
  /// The thread that works on the instance, so that a callback that calls back is turned away.
  std::atomic<std::thread::id> worker{};
  ScriptParser parser;
};

/// Registers a new instance; gives its handle. Handles count up and are never reused.
int64_t add_instance();

/// Takes an instance out of the registry, waits for the call that works on it, and invalidates it.
void remove_instance(int64_t handle);

/// The instance of a handle; null for 0, an unknown handle and a deleted one.
std::shared_ptr<Instance> find_instance(int64_t handle);

/// Holds an instance's lock. False if the instance is gone or this thread works on it already.
class Entrance {
 public:
  explicit Entrance(Instance& instance);
  ~Entrance();
  Entrance(const Entrance&) = delete;
  Entrance& operator=(const Entrance&) = delete;

  explicit operator bool() const { return entered_; }

 private:
  Instance& instance_;
  std::unique_lock<std::mutex> guard_;
  bool entered_ = false;
};

}  // namespace quor
