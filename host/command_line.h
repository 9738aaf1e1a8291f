// The command line of the programs.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "chart/surface.h"

namespace CLI {
class App;
}

namespace quor_host {

/// A command that not every program has.
struct OwnCommand {
  std::string_view name;
  std::function<void(CLI::App&)> add;
  std::function<int()> run;  ///< gives the exit status
};

/// What the programs differ by.
struct Program {
  std::vector<OwnCommand> commands;
  MakeSurface* make_png = nullptr;  ///< null if this one draws none
  /// What draws a PNG in this one's place, by its path from this one's folder; null for none.
  const char* png_program = nullptr;
};

/// Does what the command line asks for; gives the exit status. What goes wrong is told.
int run_command_line(int argc, char** argv, const Program& program);

}  // namespace quor_host
