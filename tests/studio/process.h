// The program under test in a process of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

class Process {
 public:
  /// Starts it with its output, both streams, on a pipe. The first argument is the program.
  explicit Process(std::vector<std::string> command);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  FILE* output() const { return output_; }
  /// Presses Ctrl-C; on Windows, where only consoles do so, ends it outright, with status 0.
  void interrupt() const;
  /// What it has of the machine's memory, in bytes; 0 where that isn't known.
  size_t memory() const;
  /// The exit status once it has ended; -1 if it has not ended by itself.
  int wait() const;

 private:
  intptr_t id_ = 0;
  FILE* output_ = nullptr;
};
