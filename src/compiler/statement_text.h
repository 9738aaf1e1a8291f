// What the passes over statements share: where their errors are told, how a statement declares a
// name, and the guarded view of its text.
#pragma once

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "core/status.h"

namespace quor {

/// What parts a token into pieces, some of which may be names of words.
inline constexpr std::string_view piece_separators[] = {":", "@"};

/// Takes the errors of one statement.
struct StatementErrors {
  int32_t line;
  std::string& text;

  Status fail(Status status, std::string_view message) const {
    append_error(text, message, line);
    return status;
  }
};

/// A statement cut at its first unbroken run of ":" and "=".
struct Declaration {
  std::string_view name;  ///< what stands in front of the run; empty without one
  std::string_view sign;  ///< the run
  std::string_view rest;  ///< what stands behind it; the whole text without one

  /// Only ":" and ":=" declare a name; any other run belongs to an expression.
  bool declares() const { return sign == ":" || sign == ":="; }
};

inline Declaration split_declaration(std::string_view text) {
  const size_t first = text.find_first_of(":=");
  if (first == std::string_view::npos) return {{}, {}, text};
  const size_t behind = std::min(text.find_first_not_of(":=", first), text.size());
  return {text.substr(0, first), text.substr(first, behind - first), text.substr(behind)};
}

/// A text that must be there isn't. The compile ends with status 4000 and this text.
[[noreturn]] inline void refuse_position() { throw std::out_of_range("invalid string position"); }

/// The text from a position on. Passes carry positions of a rewritten statement over to the text
/// that the scanner left, which may be shorter.
inline std::string_view text_from(std::string_view text, size_t position) {
  if (position > text.size()) refuse_position();
  return text.substr(position);
}

}  // namespace quor
