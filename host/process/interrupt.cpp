#include "interrupt.h"

#include <atomic>
#include <csignal>

namespace quor_host {
namespace {

std::atomic<bool> stop_asked{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set it");

void ask(int number) {
  stop_asked = true;
  std::signal(number, SIG_DFL);
}

}  // namespace

StopOnInterrupt::StopOnInterrupt() {
  stop_asked = false;
  before_interrupt_ = std::signal(SIGINT, ask);
  before_kill_ = std::signal(SIGTERM, ask);
}

StopOnInterrupt::~StopOnInterrupt() {
  std::signal(SIGINT, before_interrupt_);
  std::signal(SIGTERM, before_kill_);
}

bool StopOnInterrupt::has_come() { return stop_asked; }

}  // namespace quor_host
