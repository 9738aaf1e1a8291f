// Names and constants that can't be what their author meant.
#include <algorithm>
#include <cmath>

#include "elsewhere.h"
#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

using Problems = std::vector<Problem>;

/// [A]:C; and 'A':C; declare names that hold the marks.
void warn_of_marked_name(const Reading& reading, const Statement& statement, Problems& out) {
  for (size_t i = statement.name_range.begin; i < statement.name_range.end; ++i) {
    const Token& token = statement.tokens[i];
    const bool is_quoted = token.kind == TokenKind::text || token.kind == TokenKind::reference;
    const bool is_marked =
        token.kind == TokenKind::word && token.text.find_first_of("[]{}#$\\") != absent;
    const bool is_sign = token.kind == TokenKind::sign && statement.form == Form::assignment;
    if (!is_quoted && !is_marked && !is_sign) continue;
    std::string name = reading.text(statement, statement.name_range);
    std::erase_if(name, [](char c) { return std::string_view("[]{}#$\\'\"").find(c) != absent; });
    const Place place = place_of(statement, statement.name_range);
    if (is_sign) {
      out.push_back({place, "no expression can read a name that holds '" + token.text + "'",
                     "take a name of letters, digits and '_'"});
    } else {
      out.push_back({place, "the marks belong to this name, too",
                     name.empty() ? "" : "write the name alone: " + name});
    }
    return;
  }
}

/// CONST :5; declares a line of this name.
void warn_of_nameless_constant(const Reading& /*reading*/, const Statement& statement,
                               Problems& out) {
  if (statement.form != Form::constant || !statement.name_range.empty()) return;
  out.push_back(
      {place_of(statement.tokens.front()), "this constant lacks its name", "write CONST N:5;"});
}

void warn_of_second_constant(const Reading& reading, const Statement& statement, Problems& out) {
  if (statement.form != Form::constant || statement.name_range.empty()) return;
  for (const Statement& other : reading.statements) {
    if (other.number >= statement.number) return;
    if (other.form != Form::constant || other.name != statement.name) continue;
    out.push_back({place_of(statement, statement.name_range),
                   reading.text(statement, statement.name_range) +
                       " is a constant already, in line " +
                       std::to_string(reading.line_of(other.tokens.front().begin)) +
                       "; in the whole script one of the two stands",
                   "take another name, or take one away"});
    return;
  }
}

/// Constants keep six decimals.
void warn_of_lost_digits(const Reading& /*reading*/, const Statement& statement, Problems& out) {
  if (statement.form != Form::constant || statement.colon == absent) return;
  const Range value{statement.colon + 1, statement.tokens.size()};
  std::string text;
  for (size_t i = value.begin; i < value.end; ++i) text += statement.tokens[i].text;
  const auto number = to_number(text);
  if (!number || *number == 0.0) return;
  const double kept = std::round(*number * 1E6) / 1E6;
  if (std::abs(kept - *number) <= std::abs(*number) * 1E-3) return;
  out.push_back({place_of(statement, value),
                 "constants keep six decimals, of this one " + number_text(kept) + " is left",
                 "write the number itself into the expressions"});
}

using Rule = void (*)(const Reading& reading, const Statement& statement, Problems& out);
constexpr Rule rules[] = {warn_of_marked_name, warn_of_nameless_constant, warn_of_second_constant,
                          warn_of_lost_digits};

}  // namespace

void warn_of_foreign_forms(const Reading& reading, const Statement& statement, Problems& out) {
  if (!statement.is_named() || statement.name_range.empty()) return;
  std::optional<Problem> problem = explain_foreign_comment(reading, statement);
  const bool may_declare = statement.name_range.size() == 2;  // VAR A:=C; declares VARA
  if (!problem && may_declare) problem = explain_declaring_word(reading, statement);
  const Token& first = statement.tokens.front();
  if (!problem && first.text == "IF" && statement.tokens.size() > 1 &&
      statement.tokens[1].kind != TokenKind::open && statement.name_range.size() > 1) {
    problem = Problem{place_of(statement, statement.name_range),
                      "IF chooses a value, not statements", "write X:=IF(COND,A,B);"};
  }
  if (problem) out.push_back(std::move(*problem));
}

void warn_of_names(const Reading& reading, const Statement& statement, Problems& out) {
  for (const Rule rule : rules) rule(reading, statement, out);
}

}  // namespace quor_advice
