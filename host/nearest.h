// The word that a mistyped one was meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quor_host {

/// The candidate that is fewest edits away, letters in any case; empty if none is near.
std::string nearest(std::string_view word, std::span<const std::string> candidates);

}  // namespace quor_host
