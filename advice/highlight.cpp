#include "highlight.h"

#include <algorithm>

#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

bool is_declared(const Statement& statement, size_t token) {
  return token >= statement.name_range.begin && token < statement.name_range.end &&
         !statement.name.empty();
}

bool is_logical_word(const Reading& reading, const Token& token) {
  return token.kind == TokenKind::sign && token.end > token.begin &&
         (reading.script[token.begin] | 0x20) >= 'a' && (reading.script[token.begin] | 0x20) <= 'z';
}

Shade shade_of_token(const Reading& reading, const Statement& statement, size_t index) {
  const Token& token = statement.tokens[index];
  if (token.kind == TokenKind::number) return Shade::number;
  if (token.kind == TokenKind::word) return shade_of(reading, statement, index);
  if (token.kind == TokenKind::sign)
    return is_logical_word(reading, token) ? Shade::keyword : Shade::sign;
  return Shade::text;
}

}  // namespace

Shade shade_of(const Reading& reading, const Statement& statement, size_t word) {
  const std::string& text = statement.tokens[word].text;
  if (statement.form == Form::constant && word < statement.name_range.begin) return Shade::keyword;
  if (is_declared(statement, word)) {
    return statement.form == Form::constant ? Shade::constant : Shade::name;
  }
  if (word >= statement.expression.end && (is_style(text) || is_short_form(text)))
    return is_style(text) ? Shade::style : Shade::function;
  if (reading.lines.contains(text)) return Shade::name;
  if (reading.constants.contains(text)) return Shade::constant;
  if (is_known_colour(text)) return Shade::style;
  if (is_field(text)) return Shade::field;
  return is_function(text) || is_short_form(text) ? Shade::function : Shade::name;
}

std::vector<Highlight> highlights_of(const Reading& reading) {
  std::vector<Highlight> all;
  for (const Aside& aside : reading.scan.asides) {
    all.push_back({{aside.begin, aside.end}, Shade::comment, false});
  }
  for (const Statement& statement : reading.statements) {
    for (size_t i = 0; i < statement.tokens.size(); ++i) {
      const Token& token = statement.tokens[i];
      const bool is_silent = token.kind == TokenKind::open || token.kind == TokenKind::close ||
                             token.kind == TokenKind::comma || token.kind == TokenKind::colon;
      if (is_silent) continue;
      all.push_back(
          {place_of(token), shade_of_token(reading, statement, i), is_declared(statement, i)});
    }
  }
  std::ranges::sort(all, {}, [](const Highlight& highlight) { return highlight.place.begin; });
  // A comment inside a word cuts it.
  for (size_t i = 0; i + 1 < all.size(); ++i) {
    all[i].place.end = std::min(all[i].place.end, all[i + 1].place.begin);
  }
  return all;
}

}  // namespace quor_advice
