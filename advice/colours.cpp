#include "colours.h"

#include <optional>
#include <string_view>

#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

constexpr uint32_t brightest = 255;

/// The code of a call RGB(255,128,0) of plain numbers.
std::optional<uint32_t> code_of(const Statement& statement, const Call& call) {
  if (call.close == absent || call.arguments.size() != 3) return std::nullopt;
  uint32_t code = 0;
  for (const Range& argument : call.arguments) {
    if (argument.size() != 1) return std::nullopt;
    const auto part = to_number(statement.tokens[argument.begin].text);
    if (!part || *part < 0 || *part > brightest) return std::nullopt;
    code = code << 8U | static_cast<uint32_t>(*part);
  }
  return code;
}

std::string digits_of(uint32_t code) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  for (unsigned shift = 24; shift > 0;) text += digits[code >> (shift -= 4) & 0xFU];
  return text;
}

}  // namespace

std::vector<ColourAt> colours_of(const Reading& reading) {
  std::vector<ColourAt> colours;
  for (const Statement& statement : reading.statements) {
    size_t call = 0;
    for (size_t i = 0; i < statement.tokens.size(); ++i) {
      const Token& token = statement.tokens[i];
      if (token.kind != TokenKind::word) continue;
      while (call < statement.calls.size() && statement.calls[call].word < i) ++call;
      const bool calls = call < statement.calls.size() && statement.calls[call].word == i;
      if (!calls && token.text.starts_with("COLOR")) {
        if (const auto code = colour_code(token.text)) colours.push_back({place_of(token), *code});
      } else if (calls && token.text == "RGB") {
        const Call& rgb = statement.calls[call];
        const auto code = code_of(statement, rgb);
        if (code) colours.push_back({{token.begin, statement.tokens[rgb.close].end}, *code});
      }
    }
  }
  return colours;
}

std::vector<std::string> colour_texts(uint32_t code) {
  std::vector<std::string> texts;
  if (const auto word = word_of_colour(code)) texts.emplace_back(*word);
  texts.push_back("COLOR" + digits_of(code));
  texts.push_back("RGB(" + std::to_string(code >> 16U & brightest) + ", " +
                  std::to_string(code >> 8U & brightest) + ", " + std::to_string(code & brightest) +
                  ')');
  return texts;
}

}  // namespace quor_advice
