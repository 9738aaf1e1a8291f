// What each word and sign of a script is, for the eye.
#pragma once

#include <string_view>
#include <vector>

#include "reading.h"

namespace quor_advice {

enum class Shade { comment, keyword, function, field, name, constant, style, number, text, sign };

struct Highlight {
  Place place;
  Shade shade = Shade::name;
  bool is_declaration = false;
};

/// In the order of the script, never over one another; commas, colons and parentheses have none.
std::vector<Highlight> highlights_of(const Reading& reading);

/// What a word is at its place in a statement.
Shade shade_of(const Reading& reading, const Statement& statement, size_t word);

}  // namespace quor_advice
