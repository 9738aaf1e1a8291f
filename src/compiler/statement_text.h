// What the rewriting passes share: where their errors are told, and the guarded view of a
// statement.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "core/status.h"

namespace quor {

/// Takes the errors of one statement.
struct StatementErrors {
  int32_t line;
  std::string& text;

  Status fail(Status status, std::string_view message) const {
    append_error(text, message, line);
    return status;
  }
};

/// A text that must be there isn't. The compile ends with status 4000 and this text.
[[noreturn]] inline void refuse_position() { throw std::out_of_range("invalid string position"); }

/// The text from a position on. Passes carry positions of a rewritten statement over to the text
/// that the scanner left, which may be shorter.
inline std::string_view text_from(std::string_view text, size_t position) {
  if (position > text.size()) refuse_position();
  return text.substr(position);
}

}  // namespace quor
