// How much room letters take where nobody knows the font that they will be shown in: as much as in
// one of the wider fonts for screens.
#pragma once

#include <string_view>

namespace quor_host {

/// In parts of the size of the letters, from the upper edge of a line.
inline constexpr double line_height = 1.164;
inline constexpr double base_line = 0.928;

/// The width of a text whose letters have the size 1.
double letters_width(std::string_view text, bool bold);

/// Whether letters reach below the base line.
bool go_deep(std::string_view text);

}  // namespace quor_host
