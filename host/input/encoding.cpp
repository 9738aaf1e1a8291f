#include "encoding.h"

#include <simdjson.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "../errors.h"
#include "../text.h"
#include "advice/letters.h"

namespace quor_host {
namespace {

using quor_advice::is_beyond_ascii;

uint8_t byte_at(std::string_view bytes, size_t at) { return static_cast<uint8_t>(bytes[at]); }

/// Wide characters, by the zero bytes of the ASCII letters among them; empty for what is no text.
std::string_view wide_encoding(std::string_view bytes) {
  size_t even = 0;
  size_t odd = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\0') ++(i % 2 == 0 ? even : odd);
  }
  if (even + odd > bytes.size() / 2) return "UTF-32";
  return odd > 4 * even ? "UTF-16LE" : even > 4 * odd ? "UTF-16BE" : "";
}

bool is_pair_of_gbk(uint8_t /*lead*/, uint8_t trail) {
  return trail >= 0x40 && trail != 0x7F && trail < 0xFF;
}
bool is_pair_of_big5(uint8_t /*lead*/, uint8_t trail) {
  return (trail >= 0x40 && trail <= 0x7E) || (trail >= 0xA1 && trail < 0xFF);
}

/// A sign or one of the most frequent ideographs.
bool is_usual_in_gbk(uint8_t lead, uint8_t trail) {
  return trail >= 0xA1 && lead >= 0xA1 && lead <= 0xD7 && (lead <= 0xA3 || lead >= 0xB0);
}
bool is_usual_in_big5(uint8_t lead, uint8_t /*trail*/) { return lead >= 0xA1 && lead <= 0xC6; }
bool is_usual_anyhow(uint8_t /*lead*/, uint8_t /*trail*/) { return true; }

/// A way to read a text with one byte for ASCII and two for other characters.
struct PairEncoding {
  std::string_view name;
  bool (*is_pair)(uint8_t lead, uint8_t trail);
  bool (*is_usual)(uint8_t lead, uint8_t trail);
  /// Letters of the west make pairs with the ASCII behind them, too, though none side by side.
  bool stands_in_words;
};

// The surest first.
constexpr PairEncoding pair_encodings[] = {
    {"GB18030 (GBK)", is_pair_of_gbk, is_usual_in_gbk, false},
    {"Big5", is_pair_of_big5, is_usual_in_big5, true},
    {"GB18030 (GBK)", is_pair_of_gbk, is_usual_anyhow, true},
};

/// Whether all of the text reads in the encoding, most of it as usual characters.
bool reads_as(std::string_view bytes, const PairEncoding& encoding) {
  size_t pairs = 0;
  size_t usual = 0;
  size_t neighbours = 0;
  size_t last_end = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (!is_beyond_ascii(bytes[i])) continue;
    const uint8_t lead = byte_at(bytes, i);
    const uint8_t trail = i + 1 < bytes.size() ? byte_at(bytes, i + 1) : uint8_t{0};
    if (!encoding.is_pair(lead, trail)) return false;
    ++pairs;
    if (encoding.is_usual(lead, trail)) ++usual;
    if (pairs > 1 && i == last_end) ++neighbours;
    last_end = ++i + 1;
  }
  const bool fits = !encoding.stands_in_words || neighbours * 3 >= pairs;
  return fits && usual * 10 >= pairs * 7;
}

/// Words of Cyrillic are letters beyond ASCII throughout; those of the west have few.
std::string_view single_byte_encoding(std::string_view bytes) {
  size_t letters = 0;
  size_t in_words = 0;
  size_t length = 0;
  for (const char byte : bytes) {
    length = is_beyond_ascii(byte) ? length + 1 : 0;
    if (length > 0) ++letters;
    if (length >= 3) ++in_words;
  }
  return in_words * 3 >= letters ? "Windows-1251" : "Windows-1252 (Latin-1)";
}

/// The offset of the first fault, if most bytes beyond ASCII are sound UTF-8 all the same.
std::optional<size_t> first_fault(std::string_view bytes) {
  size_t first = bytes.size();
  size_t faults = 0;
  size_t sound = 0;
  for (size_t i = 0; i < bytes.size();) {
    const size_t size = quor_advice::front_character(bytes.substr(i));
    if (size > 1 && simdjson::validate_utf8(bytes.substr(i, size))) {
      sound += size;
    } else if (is_beyond_ascii(bytes[i])) {
      ++faults;
      first = std::min(first, i);
    }
    i += size;
  }
  if (sound <= faults) return std::nullopt;
  return first;
}

std::string_view narrow_encoding(std::string_view bytes) {
  const auto* const pairs = std::ranges::find_if(
      pair_encodings, [bytes](const PairEncoding& encoding) { return reads_as(bytes, encoding); });
  return pairs == std::end(pair_encodings) ? single_byte_encoding(bytes) : pairs->name;
}

}  // namespace

std::string read_text(const std::string& path) {
  std::string text = read_file(path);
  require_utf8(text, path);
  return text;
}

std::string read_text_input(const std::string& path) {
  std::string text = read_input(path);
  require_utf8(text, input_name(path));
  return text;
}

void require_utf8(std::string_view bytes, const std::string& name) {
  const bool is_wide = bytes.find('\0') != std::string_view::npos;
  if (!is_wide && simdjson::validate_utf8(bytes)) return;
  const bool is_sure = is_wide || reads_as(bytes, pair_encodings[0]);
  const auto fault = is_sure ? std::nullopt : first_fault(bytes);
  if (fault) {
    const auto line = std::ranges::count(bytes.substr(0, *fault), '\n') + 1;
    throw HostError(name + ":" + std::to_string(line) +
                    ": a character is no UTF-8; save the text as UTF-8 again");
  }
  const std::string_view encoding = is_wide ? wide_encoding(bytes) : narrow_encoding(bytes);
  if (encoding.empty()) throw HostError(name + ": is no text file");
  throw HostError(name + ": the text isn't UTF-8 but most likely " + std::string(encoding) +
                  "; save it as UTF-8");
}

}  // namespace quor_host
