// Semantic tokens: five numbers each, places counted from the token before.
#include <algorithm>
#include <array>

#include "advice/highlight.h"
#include "answers.h"

namespace quor_lsp {
namespace {

using quor_advice::Shade;

// Modifiers are bits by their place in this list.
constexpr std::array modifiers = {"declaration", "readonly", "defaultLibrary"};
constexpr unsigned declaration = 1;
constexpr unsigned readonly = 2;
constexpr unsigned built_in = 4;

struct TokenKind {
  Shade shade;
  const char* name;
  unsigned modifiers;
};

/// The kinds are numbered by their place in this list.
constexpr TokenKind token_kinds[] = {
    {Shade::comment, "comment", 0},
    {Shade::keyword, "keyword", 0},
    {Shade::function, "function", built_in},
    {Shade::field, "property", built_in},
    {Shade::name, "variable", 0},
    {Shade::constant, "variable", readonly},
    {Shade::style, "enumMember", built_in},
    {Shade::number, "number", 0},
    {Shade::text, "string", 0},
    {Shade::sign, "operator", 0},
};

}  // namespace

Json semantic_legend() {
  Json names = Json::array();
  for (const TokenKind& kind : token_kinds) names.push_back(kind.name);
  return {{"tokenTypes", std::move(names)}, {"tokenModifiers", modifiers}};
}

Json semantic_tokens(const Asked& asked) {
  Json data = Json::array();
  const Positions positions = asked.document.positions();
  const std::string& text = asked.document.text();
  size_t last_line = 0;
  size_t last_start = 0;
  const auto add = [&](quor_advice::Place place, const TokenKind& kind, unsigned bits) {
    const size_t line = positions.line_of(place.begin);
    const Json position = positions.position_of(place.begin);
    const auto start = position.at("character").get<size_t>();
    data.push_back(line - last_line);
    data.push_back(line == last_line ? start - last_start : start);
    data.push_back(positions.length_of(place));
    data.push_back(&kind - token_kinds);
    data.push_back(bits);
    last_line = line;
    last_start = start;
  };
  for (const quor_advice::Highlight& highlight : quor_advice::highlights_of(asked.reading())) {
    const auto* const kind = std::ranges::find(token_kinds, highlight.shade, &TokenKind::shade);
    const unsigned bits = kind->modifiers | (highlight.is_declaration ? declaration : 0);
    // A token stands on one line.
    for (size_t begin = highlight.place.begin; begin < highlight.place.end;) {
      const size_t line_end = positions.end_of_line(positions.line_of(begin));
      const size_t end = std::min(highlight.place.end, line_end);
      if (end > begin) add({begin, end}, *kind, bits);
      begin = std::max(end, begin);
      while (begin < highlight.place.end && (text[begin] == '\n' || text[begin] == '\r')) ++begin;
    }
  }
  return {{"data", std::move(data)}};
}

}  // namespace quor_lsp
