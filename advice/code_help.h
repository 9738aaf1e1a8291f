// What the codes of errors mean. The library's own text for one may be empty, as for an open quote
// (5) and a missing ';' (14): a host then shows the meaning.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quor_advice {

/// The texts are plain English, without markup, end in a zero, and live as long as the program.
struct CodeHelp {
  int64_t code = 0;
  std::string_view meaning;  ///< "a quote is left open"; no capital at its start, no full stop
  std::string_view cure;     ///< "close it; ..."
};

/// All codes, in ascending order.
std::span<const CodeHelp> code_help();

/// The help of a code; null for an unknown one.
const CodeHelp* find_code_help(int64_t code);

}  // namespace quor_advice
