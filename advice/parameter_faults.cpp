#include "parameter_faults.h"

#include <string>

#include "vocabulary.h"

namespace quor_advice {
namespace {

/// Where a statement reads the word: neither declares nor calls it.
const Token* find_reading(const Statement& statement, std::string_view word) {
  for (size_t i = 0; i < statement.tokens.size(); ++i) {
    const bool declares = i >= statement.name_range.begin && i < statement.name_range.end;
    const Token* const next = statement.token(i + 1);
    const bool calls = next != nullptr && next->kind == TokenKind::open;
    if (statement.tokens[i].is(TokenKind::word, word) && !declares && !calls) {
      return &statement.tokens[i];
    }
  }
  return nullptr;
}

}  // namespace

std::optional<NameFault> find_name_fault(const Reading& reading, std::string_view name) {
  const std::string shown(name);
  const Token* first = nullptr;
  for (const Statement& statement : reading.statements) {
    if (statement.form == Form::constant) {
      if (statement.name != name) continue;
      const Place place = place_of(statement, statement.name_range);
      return NameFault{{place, "the script's own CONST " + shown + " stands", {}}, true, true};
    }
    if (first == nullptr) first = find_reading(statement, name);
  }
  if (first == nullptr) return NameFault{{{}, "the script doesn't read " + shown, {}}, false, true};
  const Place place = place_of(*first);
  if (is_field(name)) {
    return NameFault{
        {place, "this hides the bar field " + shown, "take another name"}, true, false};
  }
  if (!is_bare_word(name)) return std::nullopt;
  return NameFault{
      {place, "the language's own word " + shown + " stands", "take another name"}, true, true};
}

}  // namespace quor_advice
