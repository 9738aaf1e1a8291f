#include "studio.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <future>
#include <iostream>
#include <thread>

#include "../program.h"
#include "browser.h"
#include "server.h"
#include "service.h"

namespace quor_host {
namespace {

StudioFiles files_of(const StudioOptions& options) {
  const std::filesystem::path share = program_folder() / QUOR_SHARE;
  const std::filesystem::path page =
      options.page_path.empty() ? share / "studio" : std::filesystem::path(options.page_path);
  return {page, share / "samples", options.bars_path, options.script_path};
}

/// The signals by which a user ends the program. From now on no thread that is started hears them,
/// but they can be waited for.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals_, nullptr);
  }

  /// True if one came in the time.
  bool wait(std::chrono::seconds time) const {
    const timespec limit{time.count(), 0};
    return sigtimedwait(&signals_, nullptr, &limit) > 0;
  }

 private:
  sigset_t signals_{};
};

/// Serves on a thread of its own.
class Serving {
 public:
  explicit Serving(Server& server)
      : server_(server), thread_([this] {
          server_.run();
          ended_.set_value();
        }) {}

  /// A calculation can't be broken off, and nobody who ends the program wants to wait for it.
  void end() {
    server_.stop();
    const bool is_over = ended_.get_future().wait_for(patience) == std::future_status::ready;
    std::cout << "\nThe studio has ended." << std::endl;
    if (!is_over) std::_Exit(EXIT_SUCCESS);
    thread_.join();
  }

 private:
  static constexpr std::chrono::seconds patience{3};

  Server& server_;
  std::promise<void> ended_;
  std::thread thread_;
};

}  // namespace

int run_studio(const StudioOptions& options) {
  StudioService service(files_of(options), std::chrono::seconds(options.idle_seconds));
  Server server(
      options.port, [&service](const Request& request) { return service.answer(request); },
      StudioService::body_limit);
  const std::string link =
      "http://127.0.0.1:" + std::to_string(server.port()) + "/?token=" + server.gate().token();
  std::cout << "The studio is at\n\n  " << link
            << "\n\nThe link serves one browser. Ctrl-C ends the studio." << std::endl;
  const EndSignals signals;
  if (!options.no_open) open_browser(link);
  Serving serving(server);
  const auto pause = std::chrono::seconds(std::clamp(options.idle_seconds / 2, 1, 30));
  while (!signals.wait(pause)) service.sweep();
  serving.end();
  return EXIT_SUCCESS;
}

}  // namespace quor_host
