// What there is to say about a word of a script.
#pragma once

#include <optional>
#include <string>

#include "reading.h"
#include "word_help.h"

namespace quor_advice {

/// Markdown with code in fences of the language `quor`.
struct Hover {
  Place place;
  std::string markdown;
};

std::optional<Hover> hover_at(const Reading& reading, size_t offset);

/// Form, summary, arguments, null rule and example of a built-in word.
std::string help_markdown(const WordHelp& help);

}  // namespace quor_advice
