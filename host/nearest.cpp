#include "nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "text.h"

namespace quor_host {
namespace {

/// Letters to add, to drop, to change or, as neighbours, to swap until one text is the other.
size_t edit_distance(std::string_view from, std::string_view to) {
  std::vector<size_t> older;
  std::vector<size_t> above(to.size() + 1);
  std::iota(above.begin(), above.end(), size_t{0});
  for (size_t i = 1; i <= from.size(); ++i) {
    std::vector<size_t> row{i};
    for (size_t j = 1; j <= to.size(); ++j) {
      const size_t change = above[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      row.push_back(std::min({row[j - 1] + 1, above[j] + 1, change}));
      const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (swapped) row[j] = std::min(row[j], older[j - 2] + 1);
    }
    older = std::exchange(above, std::move(row));
  }
  return above.back();
}

}  // namespace

std::string nearest(std::string_view word, std::span<const std::string> candidates) {
  constexpr size_t longest = 64;  // no word is that long, and the effort grows with the square
  if (word.empty() || word.size() > longest) return {};
  const std::string wanted = to_upper(word);
  size_t least = std::max<size_t>(1, word.size() / 3) + 1;
  std::string found;
  for (const std::string& candidate : candidates) {
    const size_t distance = edit_distance(wanted, to_upper(candidate));
    if (distance >= least) continue;
    least = distance;
    found = candidate;
  }
  return found;
}

}  // namespace quor_host
