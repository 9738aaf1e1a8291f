// The alphabetical index of words in the language reference.
#pragma once

#include <string>

namespace quor_advice {

/// A Markdown table with a row per word: its form, with a link to its section, and what it gives.
std::string word_index();

}  // namespace quor_advice
