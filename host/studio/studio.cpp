#include "studio.h"

#include <cstdlib>
#include <future>
#include <iostream>
#include <memory>
#include <thread>

#include "../errors.h"
#include "../process/memory.h"
#include "../process/program.h"
#include "browser.h"
#include "end_signals.h"
#include "server.h"
#include "service.h"

namespace quor_host {
namespace {

std::filesystem::path page_of(const StudioOptions& options) {
  if (!options.page_path.empty()) return options.page_path;
  return program_folder() / QUOR_SHARE / "studio";
}

/// The usual port keeps links alive; who has it taken already runs another studio.
std::unique_ptr<Server> server_for(const StudioOptions& options, const Service& service) {
  try {
    return std::make_unique<Server>(options.port.value_or(usual_port), service);
  } catch (const HostError&) {
    if (options.port) throw;
    std::cerr << "quor: note: port " << usual_port
              << " is taken, so links of that studio lead there\n";
    return std::make_unique<Server>(0, service);
  }
}

/// Windows knows no folder by a name that ends with a separator.
std::filesystem::path plain_name(const std::filesystem::path& folder) {
  return folder.has_filename() ? folder : folder.parent_path();
}

/// As std::filesystem::copy, which takes all files for one on Windows, where none has a number.
void copy_folder(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::filesystem::create_directories(to);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(from)) {
    const std::filesystem::path target = to / entry.path().lexically_relative(from);
    if (entry.is_directory()) {
      std::filesystem::create_directory(target);
    } else {
      std::filesystem::remove(target);
      std::filesystem::copy_file(entry.path(), target);
    }
  }
}

int export_page(const std::filesystem::path& page, const std::filesystem::path& folder) {
  [[maybe_unused]] const Page known{page};  // says what is missing
  copy_folder(plain_name(page), plain_name(folder));
  std::cout << "The page is in " << folder.string() << "; any server of files can have it.\n";
  return EXIT_SUCCESS;
}

/// Does the work on a thread of its own, and ends the program if that takes long: a file of a scan
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
  if (!options.export_path.empty()) return export_page(page_of(options), options.export_path);
  give_back_large_blocks();
  auto service = std::make_unique<StudioService>(
      StudioFiles{page_of(options), options.bars_path, options.script_path});
  const auto server =
      server_for(options, [&service](const Request& request) { return service->answer(request); });
  const EndSignals signals;
  const std::string link =
      "http://127.0.0.1:" + std::to_string(server->port()) + "/?token=" + server->gate().token();
  std::cout << "The studio is at\n\n  " << link
            << "\n\nThe link serves one browser. Ctrl-C ends the studio." << std::endl;
  if (!options.no_open) open_browser(link);
  std::thread serving([&server] { server->run(); });
  signals.wait();
  end_soon([&] {
    server->stop();
    serving.join();
    service.reset();
  });
  return EXIT_SUCCESS;
}

}  // namespace quor_host
