#include "end_signals.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace quor_host {
namespace {

HANDLE end_event() {
  static const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  return event;
}

BOOL WINAPI note_end(DWORD /*signal*/) { return SetEvent(end_event()); }

}  // namespace

EndSignals::EndSignals() {
  end_event();
  SetConsoleCtrlHandler(note_end, TRUE);
}

bool EndSignals::wait(std::chrono::seconds time) const {
  const auto milliseconds = std::chrono::milliseconds(time).count();
  return WaitForSingleObject(end_event(), static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
}

}  // namespace quor_host

#else

#include <csignal>
#include <ctime>

namespace quor_host {
namespace {

sigset_t end_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

EndSignals::EndSignals() {
  const sigset_t signals = end_signals();
  sigprocmask(SIG_BLOCK, &signals, nullptr);
}

bool EndSignals::wait(std::chrono::seconds time) const {
  const sigset_t signals = end_signals();
  const timespec limit{time.count(), 0};
  return sigtimedwait(&signals, nullptr, &limit) > 0;
}

}  // namespace quor_host

#endif
