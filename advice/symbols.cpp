#include "symbols.h"

#include <algorithm>

#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

Place whole_of(const Reading& reading, const Statement& statement) {
  const Slot& slot = reading.scan.slots[statement.number];
  return {statement.tokens.front().begin, slot.is_closed ? slot.end + 1 : slot.end};
}

SymbolKind kind_of(const Statement& statement) {
  if (statement.form == Form::constant) return SymbolKind::constant;
  return statement.form == Form::line ? SymbolKind::line : SymbolKind::assignment;
}

bool declares(const Statement& statement) {
  return !statement.name.empty() && !statement.name_range.empty();
}

bool is_name_byte(char c) { return is_letter(c) || is_digit(c) || is_beyond_ascii(c) || c == '_'; }

}  // namespace

std::vector<Symbol> symbols_of(const Reading& reading) {
  std::vector<Symbol> symbols;
  for (const Statement& statement : reading.statements) {
    if (!declares(statement)) continue;
    symbols.push_back({statement.name, kind_of(statement),
                       place_of(statement, statement.name_range), whole_of(reading, statement),
                       statement.number});
  }
  return symbols;
}

const Symbol* find_symbol(const std::vector<Symbol>& symbols, std::string_view name) {
  const auto found = std::ranges::find(symbols, name, &Symbol::name);
  return found == symbols.end() ? nullptr : &*found;
}

std::optional<size_t> statement_at(const Reading& reading, size_t offset) {
  const auto slot = std::ranges::lower_bound(reading.scan.slots, offset, {}, &Slot::end);
  if (slot != reading.scan.slots.end())
    return static_cast<size_t>(slot - reading.scan.slots.begin());
  if (reading.scan.slots.empty() || reading.scan.slots.back().is_closed) return std::nullopt;
  return reading.scan.slots.size() - 1;
}

const Token* token_at(const Reading& reading, size_t offset) {
  const auto number = statement_at(reading, offset);
  if (!number) return nullptr;
  const std::vector<Token>& tokens = reading.statements[*number].tokens;
  auto next = std::ranges::upper_bound(tokens, offset, {}, &Token::begin);
  if (next == tokens.begin()) return nullptr;
  const Token& token = *(next - 1);
  // Between a word and a sign the word is meant.
  const bool is_word = token.kind == TokenKind::word || token.kind == TokenKind::number;
  if (token.begin == offset && !is_word && next - 1 != tokens.begin()) {
    const Token& before = *(next - 2);
    if (before.end == offset && before.kind == TokenKind::word) return &before;
  }
  return offset <= token.end ? &token : nullptr;
}

bool is_in_comment(const Reading& reading, size_t offset) {
  const std::vector<Aside>& asides = reading.scan.asides;
  const auto next = std::ranges::lower_bound(asides, offset, {}, &Aside::begin);
  if (next == asides.begin()) return false;
  const Aside& aside = *(next - 1);
  const std::string_view text = reading.script.substr(aside.begin, aside.end - aside.begin);
  const bool is_closed = text.ends_with('}') || text.ends_with("*/");
  return offset < aside.end || (offset == aside.end && !is_closed);
}

std::optional<NameAt> name_at(const Reading& reading, size_t offset) {
  const Token* const token = token_at(reading, offset);
  if (token == nullptr || is_in_comment(reading, offset)) return std::nullopt;
  const Statement& statement = reading.statements[*statement_at(reading, token->begin)];
  if (declares(statement)) {
    const Place place = place_of(statement, statement.name_range);
    if (place.begin <= token->begin && token->end <= place.end)
      return NameAt{statement.name, place};
  }
  if (token->kind != TokenKind::word) return std::nullopt;
  const bool is_known =
      reading.lines.contains(token->text) || reading.constants.contains(token->text);
  return is_known ? std::optional(NameAt{token->text, place_of(*token)}) : std::nullopt;
}

std::vector<Place> places_of(const Reading& reading, std::string_view name) {
  std::vector<Place> places;
  for (const Statement& statement : reading.statements) {
    size_t begin = 0;
    if (declares(statement)) {
      begin = statement.colon;
      if (statement.name == name) places.push_back(place_of(statement, statement.name_range));
    }
    for (size_t i = begin; i < statement.tokens.size(); ++i) {
      const Token& token = statement.tokens[i];
      if (token.kind == TokenKind::word && token.text == name) places.push_back(place_of(token));
    }
  }
  return places;
}

std::string rename_fault(const Reading& reading, std::string_view name, std::string_view other) {
  const std::string upper = to_upper(other);
  const bool is_name = !other.empty() && !is_digit(other[0]) &&
                       std::ranges::all_of(other, is_name_byte) && !to_number(other).has_value();
  if (!is_name)
    return "a name is made of letters, digits and _, and begins with none of the digits";
  if (upper == "CONST" || upper == "AND" || upper == "OR") {
    return upper + " is a word of the language";
  }
  if (is_function(upper) || is_short_form(upper)) return upper + " is a word of the language";
  if (is_field(upper)) return upper + " is a bar field";
  if (is_style(upper)) return upper + " is a style item";
  const bool is_taken = reading.lines.contains(upper) || reading.constants.contains(upper);
  return is_taken && upper != name ? "the script has a " + upper + " already" : std::string();
}

std::vector<Fold> folds_of(const Reading& reading) {
  std::vector<Fold> folds;
  const auto add = [&](size_t begin, size_t end, bool is_comment) {
    if (end > begin && reading.line_of(begin) < reading.line_of(end - 1))
      folds.push_back({{begin, end}, is_comment});
  };
  for (const Statement& statement : reading.statements) {
    if (statement.tokens.empty()) continue;
    const Place whole = whole_of(reading, statement);
    add(whole.begin, whole.end, false);
  }
  const std::vector<Aside>& asides = reading.scan.asides;
  for (size_t i = 0; i < asides.size();) {
    const size_t begin = asides[i].begin;
    size_t end = asides[i++].end;
    // Comments with nothing but blanks and one line end between them are one.
    for (; i < asides.size(); ++i) {
      const std::string_view gap = reading.script.substr(end, asides[i].begin - end);
      const bool goes_on = gap.find_first_not_of(" \t\r\n") == absent &&
                           reading.line_of(asides[i].begin) <= reading.line_of(end) + 1;
      if (!goes_on) break;
      end = asides[i].end;
    }
    add(begin, end, true);
  }
  std::ranges::sort(folds, {}, [](const Fold& fold) { return fold.place.begin; });
  return folds;
}

}  // namespace quor_advice
