// How a user ends the program.
#pragma once

namespace quor_host {

/// Ctrl-C and its like. From the construction on they end nothing by themselves, but can be waited
/// for. To be made once, before other threads are started.
class EndSignals {
 public:
  EndSignals();

  void wait() const;
};

}  // namespace quor_host
