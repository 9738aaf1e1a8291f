// What `quor help` says of words.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace quor_host {

/// All built-in words, section by section.
void print_words(std::ostream& out);

/// Form, arguments, null rule and example of a built-in word; false if there is no such word.
bool print_word(std::ostream& out, std::string_view word);

/// All built-in words, to look for the nearest one of a mistyped word.
std::vector<std::string> built_in_words();

}  // namespace quor_host
