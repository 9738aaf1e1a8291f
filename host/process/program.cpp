#include "program.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "../errors.h"

namespace quor_host {

std::filesystem::path program_folder() {
  std::wstring own_path(32768, L'\0');
  own_path.resize(GetModuleFileNameW(nullptr, own_path.data(), 32768));
  return std::filesystem::path(own_path).parent_path();
}

void run_instead(const std::string& path, char** /*arguments*/) {
  throw HostError(path + " can't be started in place of another program");
}

}  // namespace quor_host

#else

#include <sys/auxv.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "../errors.h"

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
