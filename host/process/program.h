// Other programs that belong to this one.
#pragma once

#include <filesystem>
#include <string>

namespace quor_host {

/// The folder that this one lies in.
std::filesystem::path program_folder();

/// Goes on as the program at `path`, relative to the folder of this one, with the same arguments.
/// Throws HostError if that can't be started, as on Windows, where all is in one program.
[[noreturn]] void run_instead(const std::string& path, char** arguments);

}  // namespace quor_host
