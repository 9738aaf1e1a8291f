// Places in a script as pages count them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quor_host {

/// Offsets in units of UTF-16, as strings of a browser have them. The script must be UTF-8.
class Places {
 public:
  explicit Places(std::string_view script);

  size_t of_byte(size_t offset) const;
  /// The other way: the first byte of the character that begins at a unit or behind it.
  size_t byte_of(size_t unit) const;
  /// Of a line and a column as findings count them: both from 1, the column in characters.
  size_t of_column(size_t line, size_t column) const;

 private:
  std::vector<uint32_t> units_;       ///< in front of each byte, and of the end
  std::vector<uint32_t> characters_;  ///< the bytes at which characters begin, and the end
  std::vector<uint32_t> lines_;       ///< the characters with which lines begin
};

}  // namespace quor_host
