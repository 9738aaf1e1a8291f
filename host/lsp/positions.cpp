#include "positions.h"

#include <algorithm>

#include "advice/letters.h"

namespace quor_lsp {
namespace {

/// Units of one character of UTF-8; bytes that are none count one each.
size_t units_of(std::string_view character, Encoding encoding) {
  if (encoding == Encoding::utf8) return character.size();
  return character.size() == 4 ? 2 : 1;
}

/// A number that isn't negative; a larger one than fits is as good as the end.
size_t number_of(const Json& object, const char* key) {
  const Json& number = object.at(key);
  if (number.is_number_unsigned()) return number.get<size_t>();
  const auto value = number.get<int64_t>();
  return value < 0 ? 0 : static_cast<size_t>(value);
}

}  // namespace

size_t Positions::offset_of(const Json& position) const {
  const size_t line = number_of(position, "line");
  const size_t wanted = number_of(position, "character");
  if (line >= line_starts_.size()) return text_.size();
  const size_t end = end_of_line(line);
  size_t offset = line_starts_[line];
  for (size_t units = 0; offset < end && units < wanted;) {
    const size_t size = quor_advice::front_character(text_.substr(offset));
    units += units_of(text_.substr(offset, size), encoding_);
    if (units > wanted) break;  // in the middle of a character
    offset += size;
  }
  return offset;
}

quor_advice::Place Positions::place_of(const Json& range) const {
  const size_t begin = offset_of(range.at("start"));
  return {begin, std::max(begin, offset_of(range.at("end")))};
}

size_t Positions::line_of(size_t offset) const {
  return static_cast<size_t>(std::ranges::upper_bound(line_starts_, offset) -
                             line_starts_.begin()) -
         1;
}

size_t Positions::end_of_line(size_t line) const {
  size_t end = line + 1 < line_starts_.size() ? line_starts_[line + 1] : text_.size();
  while (end > line_starts_[line] && (text_[end - 1] == '\n' || text_[end - 1] == '\r')) --end;
  return end;
}

size_t Positions::length_of(quor_advice::Place place) const {
  size_t units = 0;
  for (size_t at = place.begin; at < place.end;) {
    const size_t size = quor_advice::front_character(text_.substr(at));
    if (at + size > place.end) break;  // in the middle of a character
    units += units_of(text_.substr(at, size), encoding_);
    at += size;
  }
  return units;
}

Json Positions::position_of(size_t offset) const {
  offset = std::min(offset, text_.size());
  const size_t line = line_of(offset);
  return {{"line", line}, {"character", length_of({line_starts_[line], offset})}};
}

Json Positions::range_of(quor_advice::Place place) const {
  return {{"start", position_of(place.begin)}, {"end", position_of(place.end)}};
}

std::vector<size_t> line_starts_of(std::string_view text) {
  std::vector<size_t> starts = {0};
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' || (text[i] == '\r' && text.substr(i + 1, 1) != "\n"))
      starts.push_back(i + 1);
  }
  return starts;
}

}  // namespace quor_lsp
