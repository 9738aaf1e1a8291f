#include "browser.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// Behind the header that it builds on.
#include <shellapi.h>

namespace quor_host {

void open_browser(const std::string& link) {
  ShellExecuteA(nullptr, "open", link.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

}  // namespace quor_host

#else

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace quor_host {
namespace {

bool has_display() {
  for (const char* const variable : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

/// Starts a program that lives on by itself: it prints nothing here, hears no Ctrl-C that is meant
/// for the studio, and those meant for it.
void start(char* const* arguments) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  pid_t process = 0;
  posix_spawnp(&process, arguments[0], &actions, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
}

}  // namespace

void open_browser(const std::string& link) {
  if (!has_display()) return;
  std::string program = "xdg-open";
  std::string argument = link;
  char* const arguments[] = {program.data(), argument.data(), nullptr};
  std::signal(SIGCHLD, SIG_IGN);  // so that nobody has to wait for it
  start(arguments);
}

}  // namespace quor_host

#endif
