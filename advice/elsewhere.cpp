#include "elsewhere.h"

#include <algorithm>
#include <iterator>

#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

enum class Kind { variable, number, result, loop, function };

struct DeclaringWord {
  std::string_view word;
  Kind kind;
};

constexpr DeclaringWord declaring_words[] = {
    {"VAR", Kind::variable},      {"LET", Kind::variable},    {"DEF", Kind::variable},
    {"FLOAT", Kind::variable},    {"DOUBLE", Kind::variable}, {"SERIES", Kind::variable},
    {"PARAM", Kind::number},      {"INPUT", Kind::number},    {"INPUTS", Kind::number},
    {"PARAMETER", Kind::number},  {"RETURN", Kind::result},   {"PLOT", Kind::result},
    {"FOR", Kind::loop},          {"WHILE", Kind::loop},      {"REPEAT", Kind::loop},
    {"FUNCTION", Kind::function}, {"SUB", Kind::function},
};

/// The name behind the declaring word, and what is declared.
std::string rest_of(const Reading& reading, const Statement& statement, size_t from) {
  return from < statement.tokens.size() ? reading.text(statement, {from, statement.tokens.size()})
                                        : std::string();
}

std::string advice_for(const Reading& reading, const Statement& statement, Kind kind) {
  const std::string name = reading.text(place_of(statement.tokens[1]));
  switch (kind) {
    case Kind::variable:
      return "write the name alone: " + name + ":=" + rest_of(reading, statement, 3) + ";";
    case Kind::number: {
      const bool is_plain =
          statement.tokens.size() == 4 && statement.tokens[3].kind == TokenKind::number;
      return "write CONST " + name + ":" + (is_plain ? statement.tokens[3].text : "5") +
             ";, or hand it over as a parameter";
    }
    case Kind::result:
      return "write NAME:" + rest_of(reading, statement, 1) + "; to draw a line";
    case Kind::loop:
      return "each statement runs at every bar; SUM, COUNT, HHV look back";
    case Kind::function:
      return "give each step a line of its own";
  }
  return {};
}

std::string sentence_for(const std::string& word, Kind kind) {
  switch (kind) {
    case Kind::variable:
      return word + " declares nothing";
    case Kind::number:
      return word + " declares no number";
    case Kind::result:
      return "there is no " + word + ": what is to be drawn has a name and ':'";
    case Kind::loop:
      return "there is no loop";
    case Kind::function:
      return "a script declares no function";
  }
  return {};
}

/// A+=C
std::optional<Problem> explain_update(const Reading& reading, const Statement& statement) {
  if (statement.tokens.size() < 3 || statement.tokens[0].kind != TokenKind::word) return {};
  const Token& sign = statement.tokens[1];
  const Token& equals = statement.tokens[2];
  const bool updates =
      sign.kind == TokenKind::sign && equals.is_sign("=") &&
      (sign.text == "+" || sign.text == "-" || sign.text == "*" || sign.text == "/");
  if (!updates || sign.end != equals.begin) return {};
  const std::string name = reading.text(place_of(statement.tokens[0]));
  return Problem{{sign.begin, equals.end},
                 "there is no '" + sign.text + "=': a line is declared once",
                 "declare another name, or keep a running value by SET; a running sum is SUM(X,0)"};
}

struct LookAlike {
  std::string_view letter;
  char plain;
};

constexpr LookAlike look_alikes[] = {
    {"\xD0\x90", 'A'}, {"\xD0\x92", 'B'}, {"\xD0\xA1", 'C'}, {"\xD0\x95", 'E'}, {"\xD0\x9D", 'H'},
    {"\xD0\x86", 'I'}, {"\xD0\x88", 'J'}, {"\xD0\x9A", 'K'}, {"\xD0\x9C", 'M'}, {"\xD0\x9E", 'O'},
    {"\xD0\xA0", 'P'}, {"\xD0\x85", 'S'}, {"\xD0\xA2", 'T'}, {"\xD0\xA5", 'X'}, {"\xD0\xA3", 'Y'},
    {"\xD0\xB0", 'a'}, {"\xD1\x81", 'c'}, {"\xD0\xB5", 'e'}, {"\xD1\x96", 'i'}, {"\xD1\x98", 'j'},
    {"\xD0\xBE", 'o'}, {"\xD1\x80", 'p'}, {"\xD1\x95", 's'}, {"\xD1\x85", 'x'}, {"\xD1\x83", 'y'},
    {"\xCE\x91", 'A'}, {"\xCE\x92", 'B'}, {"\xCE\x95", 'E'}, {"\xCE\x96", 'Z'}, {"\xCE\x97", 'H'},
    {"\xCE\x99", 'I'}, {"\xCE\x9A", 'K'}, {"\xCE\x9C", 'M'}, {"\xCE\x9D", 'N'}, {"\xCE\x9F", 'O'},
    {"\xCE\xA1", 'P'}, {"\xCE\xA4", 'T'}, {"\xCE\xA5", 'Y'}, {"\xCE\xA7", 'X'}, {"\xCE\xBF", 'o'},
};

}  // namespace

std::optional<Problem> explain_foreign_comment(const Reading& reading, const Statement& statement) {
  const Token& first = statement.tokens.front();
  const bool is_hash = first.kind == TokenKind::word && first.text.starts_with('#');
  const bool is_dashes = first.is_sign("-") && statement.tokens.size() > 2 &&
                         statement.tokens[1].is_sign("-") && statement.tokens[1].begin == first.end;
  if (!is_hash && !is_dashes) return std::nullopt;
  const size_t end = is_hash ? first.begin + 1 : statement.tokens[1].end;
  const std::string sign(reading.script.substr(first.begin, end - first.begin));
  const size_t line_end =
      std::min(reading.script.find_first_of("\r\n", end), reading.script.size());
  return Problem{{first.begin, line_end + 1},
                 "'" + sign + "' opens no comment",
                 "write // in front of it, or { } around it"};
}

std::optional<Problem> explain_declaring_word(const Reading& reading, const Statement& statement) {
  if (statement.tokens.size() < 2) return std::nullopt;
  if (auto problem = explain_foreign_comment(reading, statement)) return problem;
  if (auto problem = explain_update(reading, statement)) return problem;
  const Token& first = statement.tokens.front();
  const auto* const row = std::ranges::find(declaring_words, first.text, &DeclaringWord::word);
  if (row == std::end(declaring_words) || first.kind != TokenKind::word) return std::nullopt;
  if (statement.tokens[1].kind != TokenKind::word || !statement.tokens[1].gap.is_there)
    return std::nullopt;
  return Problem{place_of(first), sentence_for(reading.text(place_of(first)), row->kind),
                 advice_for(reading, statement, row->kind)};
}

std::optional<Problem> explain_index(const Reading& reading, const Token& token) {
  const std::string shown = reading.text(place_of(token));
  const size_t open = shown.find('[');
  const size_t close = shown.find(']');
  if (open == absent || open == 0 || close == absent || close < open + 2) return std::nullopt;
  const std::string index = shown.substr(open + 1, close - open - 1);
  if (!std::ranges::all_of(index, is_digit)) return std::nullopt;
  return Problem{{token.begin, token.begin + close + 1},
                 "brackets read no earlier bar",
                 "write REF(" + shown.substr(0, open) + "," + index + ")"};
}

std::optional<Problem> explain_look_alike(const Reading& reading, const Token& token) {
  if (token.kind != TokenKind::word) return std::nullopt;
  const std::string_view word = reading.script.substr(token.begin, token.end - token.begin);
  std::string plain;
  std::optional<Problem> problem;
  for (size_t at = 0; at < word.size(); at += front_character(word.substr(at))) {
    const std::string_view character = word.substr(at, front_character(word.substr(at)));
    const auto* const row = std::ranges::find(look_alikes, character, &LookAlike::letter);
    if (row == std::end(look_alikes)) {
      plain += character;
      continue;
    }
    plain += row->plain;
    if (problem) continue;
    const size_t begin = token.begin + at;
    problem = Problem{{begin, begin + character.size()},
                      "the letter '" + std::string(character) +
                          "' is of another alphabet, though it looks like " + row->plain,
                      std::string("write '") + row->plain + "'"};
  }
  const std::string meant = to_upper(plain);
  const bool is_known = is_function(meant) || is_field(meant) || is_style(meant) ||
                        reading.lines.contains(meant) || reading.constants.contains(meant);
  return is_known ? problem : std::nullopt;
}

}  // namespace quor_advice
