#ifndef _WIN32
#include "program.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "errors.h"

namespace quor_host {

void run_instead(const std::string& path, char** arguments) {
  const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / path;
  execv(program.c_str(), arguments);
  throw HostError(program.lexically_normal().string() +
                  " can't be started: " + std::generic_category().message(errno));
}

}  // namespace quor_host
#endif
