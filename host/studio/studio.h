// `quor studio`: a page on one's own machine to write scripts, see the chart, and play bars.
#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace quor_host {

struct StudioOptions {
  std::string script_path;  ///< empty for none
  std::string bars_path;    ///< a file or a folder; empty for the sample bars
  std::string page_path;    ///< the folder of the page, if not the one that belongs to the program
  std::string export_path;  ///< a folder that the page is written into, in place of serving it
  std::optional<int> port;  ///< 0 for any that is free; without one the usual, if that is free
  bool no_open = false;     ///< don't open the browser
};

/// Links to scripts hold it, and shall work after a restart.
inline constexpr int usual_port = 7437;

void add_studio(CLI::App& app, StudioOptions& options);

/// Serves until the user presses Ctrl-C, and gives the exit status. Throws HostError if it can't
/// begin.
int run_studio(const StudioOptions& options);

}  // namespace quor_host
