// One layout for scripts: a statement a line, blanks around ':' and operators and behind ',', what
// is too long broken at commas and operators, comments and single blank lines kept.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quor_advice {

/// A script in its layout. The library reads the same statements in it: it is compared before it is
/// given. What can't be laid out without a change of meaning, a statement at most, stays as
/// written.
struct Formatted {
  std::string text;
  /// Why the text is the script as it was: an open quote, or a "//" in the middle of a statement;
  /// the offset of where.
  std::optional<size_t> unreadable_at;
};

Formatted format_script(std::string_view script);

}  // namespace quor_advice
