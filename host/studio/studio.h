// `quor studio`: a page on one's own machine to write scripts, see the chart, and play bars.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace quor_host {

struct StudioOptions {
  std::string script_path;  ///< empty for none
  std::string bars_path;    ///< a file or a folder; empty for the sample bars
  std::string page_path;    ///< the folder of the page, if not the one that belongs to the program
  int port = 0;             ///< 0 for any that is free
  bool no_open = false;     ///< don't open the browser
  int idle_seconds = 1800;  ///< after which a session that was left alone is freed
};

void add_studio(CLI::App& app, StudioOptions& options);

/// Serves until the user presses Ctrl-C, and gives the exit status. Throws HostError if it can't
/// begin.
int run_studio(const StudioOptions& options);

}  // namespace quor_host
