// Lengths of UTF-8 text.
#pragma once

#include <cstddef>
#include <string_view>

namespace quor {

/// How many 16-bit units the text takes in UTF-16; 0 if it is no valid UTF-8.
size_t utf16_length(std::string_view text);

}  // namespace quor
