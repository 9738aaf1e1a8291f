#include "studio.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
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

/// The signals by which a user ends the program. For the life of the object no thread hears them,
/// nor one that is started in that time, but they can be waited for.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  }
  ~EndSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  /// True if one came in the time.
  bool wait(std::chrono::seconds time) const {
    const timespec limit{time.count(), 0};
    return sigtimedwait(&signals_, nullptr, &limit) > 0;
  }

 private:
  sigset_t signals_{};
  sigset_t before_{};
};

/// A calculation can't be broken off, and nobody who ends the program wants to wait for it.
void end_soon() {
  std::thread([] {
    std::this_thread::sleep_for(std::chrono::seconds(2));
    std::_Exit(EXIT_SUCCESS);
  }).detach();
}

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
  if (!options.no_open) open_browser(link);
  const EndSignals signals;
  std::thread serving([&server] { server.run(); });
  const auto pause = std::chrono::seconds(std::clamp(options.idle_seconds / 2, 1, 30));
  while (!signals.wait(pause)) service.sweep();
  end_soon();
  server.stop();
  serving.join();
  std::cout << "\nThe studio has ended." << std::endl;
  return EXIT_SUCCESS;
}

}  // namespace quor_host
