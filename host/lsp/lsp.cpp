#include "lsp.h"

#include <CLI/CLI.hpp>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "server.h"
#include "wire.h"

namespace quor_lsp {
namespace {

constexpr auto footer = R"(
Example: what an editor starts, with a file for what goes wrong.

  quor lsp 2>log.txt

An editor says in `initializationOptions` what scripts are compiled with, if anything:
{"parameters": {"N": 5}, "period": "5min"}.)";

/// Messages as they come, so that it shows whether another one waits.
class Inbox {
 public:
  Inbox() : reader_([this] { read(); }) {}

  /// Nothing once the input has ended.
  std::optional<std::string> next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !messages_.empty() || has_ended_; });
    if (messages_.empty()) return std::nullopt;
    std::string message = std::move(messages_.front());
    messages_.pop_front();
    return message;
  }

  bool is_empty() {
    const std::lock_guard lock(mutex_);
    return messages_.empty();
  }

  /// To be called once the input has ended.
  void close() { reader_.join(); }

 private:
  void read() {
    while (auto message = read_message(std::cin)) {
      const std::lock_guard lock(mutex_);
      messages_.push_back(std::move(*message));
      changed_.notify_one();
    }
    const std::lock_guard lock(mutex_);
    has_ended_ = true;
    changed_.notify_one();
  }

  std::mutex mutex_;  ///< guards all below but the thread
  std::condition_variable changed_;
  std::deque<std::string> messages_;
  bool has_ended_ = false;
  std::thread reader_;
};

}  // namespace

void add_lsp(CLI::App& app) {
  CLI::App& lsp =
      *app.add_subcommand("lsp", "Serve editors that speak the Language Server Protocol");
  lsp.footer(footer);
  // Editors give it whether they need it or not.
  lsp.add_flag("--stdio")->group("");
}

int run_lsp() {
  Inbox inbox;
  Server server([](const std::string& message) { write_message(std::cout, message); });
  while (const auto message = inbox.next()) {
    server.take(*message);
    if (const auto status = server.exit_status()) {
      // The reader waits for more, which the editor may never send.
      std::cout.flush();
      std::_Exit(*status);
    }
    if (inbox.is_empty()) server.publish();
  }
  inbox.close();
  return 1;  // the editor is gone without a word
}

}  // namespace quor_lsp
