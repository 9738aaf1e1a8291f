// A piece of a script that compiles like the whole: some of its statements with those that they
// read, or with stand-ins for these. It is soon compiled, however long the script.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "reading.h"

namespace quor_advice {

struct Excerpt {
  std::string script;
  std::vector<size_t> numbers;  ///< of each of its statements the number in the whole script
  std::vector<size_t> begins;   ///< of each of them the offset in the excerpt
};

/// The statements with these numbers, those that they read, and all constants.
Excerpt excerpt_of(const Reading& reading, std::set<size_t> numbers);

/// A run of statements to compile at once.
struct Stretch {
  Excerpt excerpt;
  size_t begin = 0;  ///< offsets in the script
  size_t end = 0;
};

/// The next statements from an offset on; nothing where there are none, and where a piece of the
/// script may be read in another way than the whole is. A script that is short is no pieces.
std::optional<Stretch> stretch_from(const Reading& reading, size_t begin);

}  // namespace quor_advice
