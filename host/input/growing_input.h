// A pipe, or a file that another program writes on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quor_host {

class GrowingInput {
 public:
  /// "-" is the standard input. Throws HostError for a file that can't be opened.
  explicit GrowingInput(const std::string& path);
  ~GrowingInput();
  GrowingInput(const GrowingInput&) = delete;
  GrowingInput& operator=(const GrowingInput&) = delete;

  /// A file can be read as far as it goes; of a pipe nobody knows how far.
  bool is_file() const { return is_file_; }

  /// What has come since the last call: of a file empty where nothing has; a pipe is waited for.
  /// Nothing at the end of a pipe and once the user wants to stop.
  std::optional<std::string_view> read();

  /// Waits a moment for a file to grow. What has become of one that can't grow on: a text for the
  /// user, or empty.
  std::string wait();

 private:
  std::string path_;
  int descriptor_ = 0;
  bool is_file_ = false;
  uint64_t position_ = 0;
  std::pair<uint64_t, uint64_t> identity_;  ///< of the file that had the name at first
  std::vector<char> piece_;
};

}  // namespace quor_host
