// `quor format`: scripts in one layout.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quor_host {

struct FormatOptions {
  std::vector<std::string> paths;  ///< files, and folders with scripts
  bool checks = false;             ///< says what isn't in the layout, and writes nothing
  bool is_filter = false;          ///< from the standard input to the output
};

void add_format(CLI::App& app, FormatOptions& options);

/// Gives the exit status: 1 if a script can't be read, or with `checks` isn't in the layout; 2 for
/// options that don't fit together.
int format_scripts(const FormatOptions& options);

}  // namespace quor_host
