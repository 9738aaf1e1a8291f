// Places of a text as the protocol counts them: lines from 0, and characters in units of an
// encoding that both sides agree on.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "advice/reading.h"
#include "json.h"

namespace quor_lsp {

enum class Encoding { utf8, utf16 };

class Positions {
 public:
  Positions(std::string_view text, const std::vector<size_t>& line_starts, Encoding encoding)
      : text_(text), line_starts_(line_starts), encoding_(encoding) {}

  /// The offset of {"line":..,"character":..}; a place behind the end of a line or of the text
  /// counts as that end. Throws Json::exception for anything else.
  size_t offset_of(const Json& position) const;
  quor_advice::Place place_of(const Json& range) const;

  Json position_of(size_t offset) const;
  Json range_of(quor_advice::Place place) const;

  /// Units of the stretch, which is on one line.
  size_t length_of(quor_advice::Place place) const;
  size_t line_of(size_t offset) const;
  /// Where the text of a line ends, without its line end.
  size_t end_of_line(size_t line) const;

 private:
  std::string_view text_;
  const std::vector<size_t>& line_starts_;
  Encoding encoding_;
};

/// The offset at which each line begins; a carriage return, a line feed and both together end one.
std::vector<size_t> line_starts_of(std::string_view text);

}  // namespace quor_lsp
