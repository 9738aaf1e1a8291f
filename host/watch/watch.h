// `quor watch`: a script over bars as they come.
#pragma once

#include <cstddef>

#include "../options/options.h"

namespace quor_host {

struct WatchOptions {
  ScriptOptions script;
  BarOptions bars;
  LineOptions lines;
  size_t last = 10;             ///< bars to print of those that are there at the start
  bool finished_alone = false;  ///< a bar is taken once the next one has begun
  bool as_csv = false;
  bool as_json = false;
};

void add_watch(CLI::App& app, WatchOptions& options);

/// Goes on until the pipe ends, the file goes away, or the user presses Ctrl-C. Gives the exit
/// status: 1 if the script has an error or the file is gone. Throws HostError for bars that can't
/// be read.
int watch_bars(const WatchOptions& options);

}  // namespace quor_host
