#include "places.h"

#include <algorithm>

#include "advice/letters.h"

namespace quor_host {

Places::Places(std::string_view script) {
  uint32_t units = 0;
  lines_.push_back(0);
  for (size_t at = 0; at < script.size();) {
    const size_t size = quor_advice::front_character(script.substr(at));
    characters_.push_back(static_cast<uint32_t>(at));
    units_.insert(units_.end(), size, units);
    units += size == 4 ? 2 : 1;
    const bool is_pair = script[at] == '\r' && at + 1 < script.size() && script[at + 1] == '\n';
    const bool ends_line = script[at] == '\n' || (script[at] == '\r' && !is_pair);
    if (ends_line) lines_.push_back(static_cast<uint32_t>(characters_.size()));
    at += size;
  }
  characters_.push_back(static_cast<uint32_t>(script.size()));
  units_.push_back(units);
}

size_t Places::of_byte(size_t offset) const { return units_[std::min(offset, units_.size() - 1)]; }

size_t Places::byte_of(size_t unit) const {
  const auto found = std::ranges::lower_bound(units_, unit);
  return std::min(static_cast<size_t>(found - units_.begin()), units_.size() - 1);
}

size_t Places::of_column(size_t line, size_t column) const {
  if (line == 0 || line > lines_.size()) return units_.back();
  const size_t character = lines_[line - 1] + column - 1;
  return of_byte(characters_[std::min(character, characters_.size() - 1)]);
}

}  // namespace quor_host
