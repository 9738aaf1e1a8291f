// Ctrl-C as a wish to come to an end.
#pragma once

namespace quor_host {

/// For its life Ctrl-C, and a polite kill, are noted; Ctrl-C pressed again ends the program. One at
/// a time.
class StopOnInterrupt {
 public:
  StopOnInterrupt();
  ~StopOnInterrupt();
  StopOnInterrupt(const StopOnInterrupt&) = delete;
  StopOnInterrupt& operator=(const StopOnInterrupt&) = delete;

  static bool has_come();

 private:
  using Handler = void (*)(int);
  Handler before_interrupt_;
  Handler before_kill_;
};

}  // namespace quor_host
