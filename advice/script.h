// A script cut into statements by the rules of the language.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mapped_text.h"

namespace quor_advice {

/// One statement as the language counts them: blank lines and lines with only a comment are
/// statements of their own, a line end inside one is not.
struct Slot {
  MappedText text;  ///< without comments and blanks; empty for a blank line
  size_t end = 0;   ///< offset of its ";", of the end of a blank line, or of the end of the script
  bool is_closed = true;  ///< false for unfinished text at the end
};

/// A stretch of text between quotes.
struct Quoted {
  char mark = '\'';
  size_t begin = 0;           ///< offset of the opening quote
  std::optional<size_t> end;  ///< offset of the closing one; nothing if it stays open
  bool in_comment = false;
  bool hides_comment_end = false;  ///< what would have closed the comment stands inside
};

/// A comment between braces or between /* and */.
struct Comment {
  size_t begin = 0;  ///< offset of its opening mark
  size_t end = 0;    ///< offset of its closing mark
};

/// What stands in a script and isn't read: a comment of any kind with its marks, up to the end of
/// its line or of the script if these end it; or a closing mark outside of comments.
struct Aside {
  size_t begin = 0;
  size_t end = 0;
};

struct ScannedScript {
  std::vector<Slot> slots;  ///< by the number under which the library reports errors
  std::vector<Quoted> quoted;
  std::vector<Comment> comments;            ///< the closed ones
  std::vector<Aside> asides;                ///< all that isn't read
  std::vector<size_t> stray_ends;           ///< offsets of closing marks outside of comments
  std::optional<size_t> open_comment;       ///< where a block comment opens that nothing closes
  std::optional<size_t> half_line_comment;  ///< a "//" behind half a statement, which ends the scan
  bool is_unfinished = false;               ///< the last statement has no ";"
  bool ends_well = true;  ///< false where the library misses the end of the last statement
};

ScannedScript scan_script(std::string_view script);

}  // namespace quor_advice
