#include "growing_input.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include "../errors.h"
#include "../process/interrupt.h"
#include "../text.h"
#include "paths.h"

#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace quor_host {
namespace {

constexpr size_t piece_size = size_t{1} << 16U;

#ifdef _WIN32

int open_file(const std::string& path) {
  return _wopen(path_of(path).c_str(), _O_RDONLY | _O_BINARY);
}
void close_file(int descriptor) { _close(descriptor); }
bool has_come(int /*descriptor*/) { return true; }  // Ctrl-C ends what is read from
ptrdiff_t read_some(int descriptor, char* to, size_t size) {
  return _read(descriptor, to, static_cast<unsigned>(size));
}
/// Nothing else may take the name of an open file there.
std::pair<uint64_t, uint64_t> identity_of(const std::string& /*path*/) { return {}; }

#else

int open_file(const std::string& path) { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }
void close_file(int descriptor) { ::close(descriptor); }

/// Waits for a pipe, for a moment: a signal may come between a look at it and the call.
bool has_come(int descriptor) {
  constexpr int a_moment = 100;
  pollfd state{descriptor, POLLIN, 0};
  return ::poll(&state, 1, a_moment) > 0;
}

ptrdiff_t read_some(int descriptor, char* to, size_t size) { return ::read(descriptor, to, size); }

std::pair<uint64_t, uint64_t> identity_of(const std::string& path) {
  struct stat file {};
  if (::stat(path.c_str(), &file) != 0) return {};
  return {file.st_dev, file.st_ino};
}

#endif

}  // namespace

GrowingInput::GrowingInput(const std::string& path) : path_(path), piece_(piece_size) {
  if (path == "-") return;
  // Once only: who writes to a pipe is ended when its reader goes, if only to come back.
  descriptor_ = std::filesystem::is_directory(path_of(path)) ? -1 : open_file(path);
  if (descriptor_ < 0) {
    quor_bars::open_file(path);  // tells why it can't be
    throw HostError(path + ": can't be opened");
  }
  is_file_ = std::filesystem::is_regular_file(path_of(path));
  identity_ = identity_of(path);
}

GrowingInput::~GrowingInput() {
  if (path_ != "-") close_file(descriptor_);
}

std::optional<std::string_view> GrowingInput::read() {
  while (!is_file_ && !has_come(descriptor_)) {
    if (StopOnInterrupt::has_come()) return std::nullopt;
  }
  if (StopOnInterrupt::has_come()) return std::nullopt;
  const ptrdiff_t count = read_some(descriptor_, piece_.data(), piece_.size());
  if (count < 0) {
    if (errno == EINTR) return std::string_view();
    throw HostError(input_name(path_) +
                    ": can't be read: " + std::generic_category().message(errno));
  }
  if (count == 0 && !is_file_) return std::nullopt;
  position_ += static_cast<uint64_t>(count);
  return std::string_view(piece_.data(), static_cast<size_t>(count));
}

std::string GrowingInput::wait() {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  std::error_code error;
  const uint64_t size = std::filesystem::file_size(path_of(path_), error);
  if (error) return path_ + ": is gone";
  if (identity_of(path_) != identity_) return path_ + ": is another file now";
  if (size < position_) return path_ + ": is shorter than it was";
  return {};
}

}  // namespace quor_host
