// The desks of the pages that are open.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "desk.h"

namespace quor_host {

/// Each member may be called from any thread.
class Sessions {
 public:
  static constexpr size_t most = 16;

  explicit Sessions(std::chrono::seconds idle) : idle_(idle) {}

  /// The id of a new one. Throws Refusal if there are too many.
  std::string open();
  /// Throws Refusal for an id that isn't known. The desk lives on in the hands of those who have
  /// it.
  std::shared_ptr<Desk> find(const std::string& id);
  void close(const std::string& id);
  /// Closes those that no request has asked for in the idle time.
  void sweep();

 private:
  std::chrono::seconds idle_;
  std::mutex lock_;  ///< guards the map
  std::map<std::string, std::shared_ptr<Desk>> desks_;
};

}  // namespace quor_host
