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

void EndSignals::wait() const { WaitForSingleObject(end_event(), INFINITE); }

}  // namespace quor_host

#else

#include <csignal>

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

void EndSignals::wait() const {
  const sigset_t signals = end_signals();
  int signal = 0;
  sigwait(&signals, &signal);
}

}  // namespace quor_host

#endif
