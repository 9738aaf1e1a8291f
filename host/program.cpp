#ifndef _WIN32
#include "program.h"

#include <sys/auxv.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "errors.h"

namespace quor_host {

std::filesystem::path program_folder() {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel gives the address as a number
  const auto* const own_path = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  return std::filesystem::canonical(own_path).parent_path();
}

void run_instead(const std::string& path, char** arguments) {
  const auto program = program_folder() / path;
  execv(program.c_str(), arguments);
  throw HostError(program.lexically_normal().string() +
                  " can't be started: " + std::generic_category().message(errno));
}

}  // namespace quor_host
#endif
