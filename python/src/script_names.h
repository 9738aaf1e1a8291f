// What stands where in the text of a script.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace quor_python {

/// The lines that a script declares by ":", in capitals, in its order.
std::vector<std::string> drawn_lines(const std::string& source);

/// Where a word stands, in capitals, outside of quotes and comments: offsets of its begin and end.
std::vector<std::pair<size_t, size_t>> places_of_word(const std::string& source,
                                                      const std::string& word);

}  // namespace quor_python
