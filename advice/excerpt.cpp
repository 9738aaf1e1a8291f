#include "excerpt.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

constexpr size_t statements_at_once = 16;  ///< of a stretch, as long as there are as many
constexpr size_t shortest_script = 48;     ///< statements; a shorter one is soon compiled as it is

size_t begin_of(const Statement& statement) { return statement.tokens.front().begin; }

/// Behind the ";".
size_t end_of(const Reading& reading, const Statement& statement) {
  const Slot& slot = reading.scan.slots[statement.number];
  return slot.is_closed ? slot.end + 1 : slot.end;
}

/// Adds the statements that declare what these read.
void add_declarations(const Reading& reading, std::set<size_t>& numbers) {
  for (std::vector<size_t> open(numbers.begin(), numbers.end()); !open.empty();) {
    const size_t next = open.back();
    open.pop_back();
    for (const Token& token : reading.statements[next].tokens) {
      const auto line = reading.lines.find(token.text);
      if (line != reading.lines.end() && numbers.insert(line->second).second)
        open.push_back(line->second);
    }
  }
}

std::string own_text(const Reading& reading, const Statement& statement) {
  const size_t begin = begin_of(statement);
  return std::string(reading.script.substr(begin, end_of(reading, statement) - begin));
}

void append(Excerpt& excerpt, size_t number, std::string_view text) {
  excerpt.numbers.push_back(number);
  excerpt.begins.push_back(excerpt.script.size());
  excerpt.script += text;
  excerpt.script += '\n';
}

/// Whether quotes, comments and ends lie as an author means them, so that a statement is the same
/// text alone.
bool is_orderly(const ScannedScript& scan) {
  const bool is_closed = !scan.open_comment && !scan.half_line_comment && scan.stray_ends.empty();
  return is_closed && !scan.is_unfinished && scan.ends_well &&
         std::ranges::all_of(scan.quoted, [](const Quoted& q) { return q.end && !q.in_comment; });
}

bool is_operand(const Token& token) {
  return token.kind != TokenKind::sign && token.kind != TokenKind::open &&
         token.kind != TokenKind::close && token.kind != TokenKind::comma &&
         token.kind != TokenKind::colon;
}

/// A function without its parenthesis, which may stand for an earlier call of it.
bool may_name_a_call(const Statement& statement, size_t index) {
  const Token& token = statement.tokens[index];
  if (!is_function(token.text) || is_bare_word(token.text)) return false;
  const Token* const next = statement.token(index + 1);
  const bool is_call = next != nullptr && next->kind == TokenKind::open;
  const bool is_item = index > 0 && statement.tokens[index - 1].kind == TokenKind::comma;
  return !is_call && !is_item;
}

/// Whether all that a statement reads is told by its words one by one.
bool is_plain(const Statement& statement) {
  const bool is_constant = statement.form == Form::constant;
  size_t colons = 0;
  for (size_t i = 0; i < statement.tokens.size(); ++i) {
    const Token& token = statement.tokens[i];
    if (token.kind == TokenKind::colon && (i == 0 || ++colons > 1)) return false;
    // Blanks don't part words: this may be one name.
    const bool is_joined = i > 0 && is_operand(token) && is_operand(statement.tokens[i - 1]);
    if (is_joined && !(is_constant && i == 1)) return false;
    if (token.kind == TokenKind::word && may_name_a_call(statement, i)) return false;
  }
  return true;
}

/// These statements, all constants, and for each line that they read one of its name: what it is
/// made of is no matter of theirs.
Excerpt stretch_of(const Reading& reading, std::span<const Statement* const> stretch) {
  std::set<size_t> numbers;
  std::set<size_t> read;
  for (const Statement* const statement : stretch) {
    numbers.insert(statement->number);
    for (const Token& token : statement->tokens) {
      const auto line = reading.lines.find(token.text);
      if (line != reading.lines.end()) read.insert(line->second);
    }
  }
  Excerpt excerpt;
  for (const Statement& statement : reading.statements) {
    const bool is_whole = statement.form == Form::constant || numbers.contains(statement.number);
    if (is_whole) {
      append(excerpt, statement.number, own_text(reading, statement));
    } else if (read.contains(statement.number)) {
      append(excerpt, statement.number, statement.name + ":=C;");
    }
  }
  return excerpt;
}

}  // namespace

Excerpt excerpt_of(const Reading& reading, std::set<size_t> numbers) {
  add_declarations(reading, numbers);
  Excerpt excerpt;
  for (const Statement& statement : reading.statements) {
    const bool is_taken = statement.form == Form::constant || numbers.contains(statement.number);
    if (is_taken) append(excerpt, statement.number, own_text(reading, statement));
  }
  return excerpt;
}

std::optional<Stretch> stretch_from(const Reading& reading, size_t begin) {
  if (!is_orderly(reading.scan)) return std::nullopt;
  std::vector<const Statement*> all;
  for (const Statement& statement : reading.statements) {
    if (!statement.tokens.empty()) all.push_back(&statement);
  }
  const auto first = std::ranges::lower_bound(
      all, begin, {}, [](const Statement* statement) { return begin_of(*statement); });
  if (first == all.end() || all.size() < shortest_script) return std::nullopt;
  const size_t taken = std::min(statements_at_once, static_cast<size_t>(all.end() - first));
  const std::span<const Statement* const> stretch(first, taken);
  Excerpt excerpt = stretch_of(reading, stretch);
  const bool is_safe = std::ranges::all_of(
      excerpt.numbers, [&](size_t number) { return is_plain(reading.statements[number]); });
  if (!is_safe) return std::nullopt;
  return Stretch{std::move(excerpt), begin_of(**first), end_of(reading, *stretch.back())};
}

}  // namespace quor_advice
