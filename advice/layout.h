// The layout of one statement: its tokens with blanks, and with line ends where it is too long.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reading.h"

namespace quor_advice {

/// The widest line that is left whole, in places on a screen.
inline constexpr size_t widest_line = 100;

/// The statement, which ends at an offset, with its ";" if it is closed. Comments inside it, one
/// line each, keep their places.
std::string lay_out(const Statement& statement, std::string_view script,
                    const std::vector<Aside>& asides, bool is_closed, size_t end);

}  // namespace quor_advice
