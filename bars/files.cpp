#include <cerrno>
#include <filesystem>
#include <fstream>
#include <istream>
#include <system_error>

#include "errors.h"
#include "text.h"

namespace quor_bars {

std::string read_stream(std::istream& stream, const std::string& name) {
  std::string bytes;
  for (size_t piece = 1 << 16; stream; piece *= 2) {
    const size_t known = bytes.size();
    bytes.resize(known + piece);
    stream.read(bytes.data() + known, static_cast<std::streamsize>(piece));
    bytes.resize(known + static_cast<size_t>(stream.gcount()));
  }
  if (stream.bad()) throw ReadError(name + ": can't be read");
  bytes.erase(0, bytes.size() - beginning_of_text(bytes, name).size());
  return bytes;
}

std::ifstream open_file(const std::string& path) {
  const std::filesystem::path name(std::u8string(path.begin(), path.end()));
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(name, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    throw ReadError(path + ": there is no such file");
  }
  if (status.type() == std::filesystem::file_type::directory) {
    throw ReadError(path + ": is a directory, not a file");
  }
  errno = 0;
  std::ifstream file(name, std::ios::binary);
  if (!file) {
    const std::string reason = errno == 0 ? "" : ": " + std::generic_category().message(errno);
    throw ReadError(path + ": can't be opened" + reason);
  }
  return file;
}

std::string read_file(const std::string& path) {
  std::ifstream file = open_file(path);
  return read_stream(file, path);
}

}  // namespace quor_bars
