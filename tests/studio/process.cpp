#include "process.h"

#include <gtest/gtest.h>

#include <fstream>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <filesystem>

namespace {

HANDLE handle_of(intptr_t id) {
  return reinterpret_cast<HANDLE>(id);  // NOLINT(performance-no-int-to-ptr)
}

/// Whatever is in quotes is one argument; backslashes count twice in front of a quote.
std::wstring quoted(const std::string& argument) {
  const std::filesystem::path wide(argument);
  std::wstring text = L"\"";
  size_t backslashes = 0;
  for (const wchar_t c : wide.native()) {
    if (c == L'"') text.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text += c;
  }
  return text.append(backslashes, L'\\') + L'"';
}

}  // namespace

Process::Process(std::vector<std::string> command) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE reading = nullptr;
  HANDLE writing = nullptr;
  CreatePipe(&reading, &writing, &inherited, 0);
  SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = start.hStdError = writing;
  std::wstring line;
  for (const std::string& argument : command) line += quoted(argument) + L' ';
  PROCESS_INFORMATION process{};
  EXPECT_NE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                           &start, &process),
            0);
  CloseHandle(process.hThread);
  CloseHandle(writing);
  id_ = reinterpret_cast<intptr_t>(process.hProcess);
  output_ = _fdopen(_open_osfhandle(reinterpret_cast<intptr_t>(reading), _O_RDONLY), "rb");
}

Process::~Process() {
  fclose(output_);
  CloseHandle(handle_of(id_));
}

void Process::interrupt() const { TerminateProcess(handle_of(id_), 0); }

int Process::wait() const {
  DWORD status = 0;
  WaitForSingleObject(handle_of(id_), INFINITE);
  return GetExitCodeProcess(handle_of(id_), &status) != 0 ? static_cast<int>(status) : -1;
}

#else

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

Process::Process(std::vector<std::string> command) {
  std::vector<char*> pointers;
  for (std::string& argument : command) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  int ends[2] = {-1, -1};
  EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  pid_t id = 0;
  EXPECT_EQ(posix_spawn(&id, pointers[0], &actions, nullptr, pointers.data(), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  id_ = id;
  output_ = fdopen(ends[0], "r");
}

Process::~Process() { fclose(output_); }

void Process::interrupt() const { kill(static_cast<pid_t>(id_), SIGINT); }

int Process::wait() const {
  int status = -1;
  waitpid(static_cast<pid_t>(id_), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif

size_t Process::memory() const {
  size_t kilobytes = 0;
#ifdef __linux__
  std::ifstream status("/proc/" + std::to_string(id_) + "/status");
  for (std::string word; kilobytes == 0 && status >> word;) {
    if (word == "VmRSS:") status >> kilobytes;
  }
#endif
  return kilobytes * 1024;
}
