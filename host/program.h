// Other programs that belong to this one.
#pragma once

#include <string>

namespace quor_host {

/// Goes on as the program at `path`, relative to the folder of this one, with the same arguments.
/// Throws HostError if that can't be started.
[[noreturn]] void run_instead(const std::string& path, char** arguments);

}  // namespace quor_host
