// Text in which every byte knows its place in the author's script.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quor_advice {

struct MappedText {
  std::string bytes;
  std::vector<size_t> places;  ///< offset in the script of each byte

  void append(char byte, size_t place) {
    bytes += byte;
    places.push_back(place);
  }
  void append(const MappedText& text, size_t begin, size_t end) {
    bytes.append(text.bytes, begin, end - begin);
    places.insert(places.end(), text.places.begin() + static_cast<std::ptrdiff_t>(begin),
                  text.places.begin() + static_cast<std::ptrdiff_t>(end));
  }
  void clear() {
    bytes.clear();
    places.clear();
  }
};

/// The script byte by byte.
MappedText map_text(std::string_view script);

/// Replaces from left to right, ignoring the case of letters. The first byte of a replacement gets
/// the place `shift` behind the start of what it replaces, the last one the place `shift` in front
/// of its end.
void replace_all(MappedText& text, std::string_view from, std::string_view to, size_t shift = 0);

}  // namespace quor_advice
