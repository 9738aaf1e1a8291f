#include "browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

namespace quor_host {
namespace {

bool has_display() {
  for (const char* const variable : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

/// What it prints isn't the studio's.
pid_t start(char* const* arguments) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int error = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? process : 0;
}

}  // namespace

void open_browser(const std::string& link) {
  if (!has_display()) return;
  std::string program = "xdg-open";
  std::string argument = link;
  char* const arguments[] = {program.data(), argument.data(), nullptr};
  const pid_t process = start(arguments);
  if (process == 0) return;
  // Nobody waits for it, but it mustn't stay in the list of processes when it is done.
  std::thread([process] { waitpid(process, nullptr, 0); }).detach();
}

}  // namespace quor_host
