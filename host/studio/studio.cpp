#include "studio.h"

#include <algorithm>
#include <cstdlib>
#include <future>
#include <iostream>
#include <memory>
#include <thread>

#include "../program.h"
#include "browser.h"
#include "end_signals.h"
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

/// Does the work on a thread of its own, and ends the program if that takes long: a calculation
/// can't be broken off, and nobody who ends the program wants to wait for it.
template <typename Work>
void end_soon(const Work& work) {
  constexpr std::chrono::seconds patience{3};
  std::promise<void> done;
  std::thread ending([&] {
    work();
    done.set_value();
  });
  const bool is_over = done.get_future().wait_for(patience) == std::future_status::ready;
  std::cout << "\nThe studio has ended." << std::endl;
  if (!is_over) std::_Exit(EXIT_SUCCESS);
  ending.join();
}

}  // namespace

int run_studio(const StudioOptions& options) {
  auto service = std::make_unique<StudioService>(files_of(options),
                                                 std::chrono::seconds(options.idle_seconds));
  Server server(
      options.port, [&service](const Request& request) { return service->answer(request); },
      StudioService::body_limit);
  const EndSignals signals;
  const std::string link =
      "http://127.0.0.1:" + std::to_string(server.port()) + "/?token=" + server.gate().token();
  std::cout << "The studio is at\n\n  " << link
            << "\n\nThe link serves one browser. Ctrl-C ends the studio." << std::endl;
  if (!options.no_open) open_browser(link);
  std::thread serving([&server] { server.run(); });
  const auto pause = std::chrono::seconds(std::clamp(options.idle_seconds / 2, 1, 30));
  while (!signals.wait(pause)) service->sweep();
  end_soon([&] {
    server.stop();
    serving.join();
    service.reset();
  });
  return EXIT_SUCCESS;
}

}  // namespace quor_host
