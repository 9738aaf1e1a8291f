// What the program gets from the command line, reads and prints to, the same bytes on every system.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quor_host {

/// The arguments behind the program's name, in UTF-8 whatever the system's own code page is.
std::vector<std::string> utf8_arguments(int argc, char** argv);

/// Makes both outputs take UTF-8, and all streams leave line ends as they are.
void prepare_streams();

/// Whether a person sees what goes to the error output.
bool is_watched();

/// Whether what goes to the error output may be in colours: a person sees it on a terminal that
/// shows them, and hasn't set NO_COLOR.
bool takes_colours();

/// Whether a terminal shows the output.
bool is_output_watched();

/// The columns of the terminal that shows the output; nothing where a file or a program takes it.
std::optional<size_t> terminal_width();

}  // namespace quor_host
