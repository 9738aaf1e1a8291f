// How a user ends the program.
#pragma once

#include <chrono>

namespace quor_host {

/// Ctrl-C and its like. From the construction on they end nothing by themselves, but can be waited
/// for. To be made once, before other threads are started.
class EndSignals {
 public:
  EndSignals();

  /// True if one came in the time.
  bool wait(std::chrono::seconds time) const;
};

}  // namespace quor_host
