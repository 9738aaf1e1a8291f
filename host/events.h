// Notices and trade signals, printed as the library raises them.
#pragma once

#include <iosfwd>
#include <string>

namespace quor_host {

/// From now on every notice and signal of the process goes to `out`, one in a line. The drawing
/// records of the script give the notices their names.
void print_events(std::ostream& out, const std::string& shapes);

}  // namespace quor_host
