#include "text/utf8.h"

#include <algorithm>
#include <cstdint>

namespace quor {
namespace {

/// A leading byte: how many bytes follow, and the bits of the code point it holds.
struct Lead {
  size_t followers;
  uint32_t bits;
  uint32_t smallest;  ///< a smaller code point has a shorter form
};

constexpr Lead invalid_lead{4, 0, 0};

Lead lead_of(uint8_t byte) {
  if (byte < 0x80) return {0, byte, 0};
  if (byte >= 0xC0 && byte < 0xE0) return {1, byte & 0x1FU, 0x80};
  if (byte >= 0xE0 && byte < 0xF0) return {2, byte & 0x0FU, 0x800};
  if (byte >= 0xF0 && byte < 0xF8) return {3, byte & 0x07U, 0x10000};
  return invalid_lead;
}

bool is_code_point(uint32_t code) { return code < 0xD800 || (code >= 0xE000 && code <= 0x10FFFF); }

}  // namespace

size_t utf16_length(std::string_view text) {
  size_t units = 0;
  while (!text.empty()) {
    const Lead lead = lead_of(static_cast<uint8_t>(text[0]));
    if (lead.followers > 3 || lead.followers >= text.size()) return 0;
    uint32_t code = lead.bits;
    for (const char c : text.substr(1, lead.followers)) {
      const auto byte = static_cast<uint8_t>(c);
      if ((byte & 0xC0) != 0x80) return 0;
      code = (code << 6) | (byte & 0x3FU);
    }
    if (code < lead.smallest || !is_code_point(code)) return 0;
    units += code >= 0x10000 ? 2 : 1;
    text.remove_prefix(lead.followers + 1);
  }
  return units;
}

}  // namespace quor
