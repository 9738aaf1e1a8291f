#include "explain.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "code_help.h"
#include "elsewhere.h"
#include "letters.h"

namespace quor_advice {
namespace {

using Explain = std::optional<Problem> (*)(const Case& failed);

struct Explainer {
  int64_t code;
  Explain explain;
};

/// The form of the statement is all there is to say.
std::optional<Problem> explain_operand(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  if (auto problem = explain_declaring_word(failed.reading, *failed.statement)) return problem;
  const auto problems = check_form(failed.reading, *failed.statement);
  if (problems.empty()) return std::nullopt;
  return problems.front();
}

/// An argument that came to nothing has no statement to name.
std::optional<Problem> explain_gone(const Case& failed) { return find_odd_form(failed.reading); }

constexpr Explainer rows[] = {
    {1, explain_word},
    {2, explain_word},
    {3, explain_short_form},
    {4, explain_operand},
    {5, explain_open_quote},
    {6, explain_parentheses},
    {7, explain_count},
    {8, explain_named_signal},
    {9, explain_reference},
    {10, explain_reference},
    {11, explain_reference},
    {12, explain_name},
    {13, explain_name},
    {14, explain_unfinished},
    {15, explain_branch},
    {2000, explain_gone},
    {2001, explain_operand},
    {2002, explain_constant},
    {2003, explain_constant},
    {2004, explain_name},
    {2006, explain_constant},
    {2007, explain_reference},
    {2008, explain_reference},
    {2009, explain_reference},
    {2010, explain_reference},
    {2011, explain_short_form},
    {2012, explain_short_form},
    {2013, explain_constant},
    {2014, explain_second_output},
    {2015, explain_look_ahead},
    {2016, explain_look_ahead},
    {4000, explain_exception},
};

/// The code's own words, at the first word of the statement's or at its first line.
Problem in_plain_words(const Case& failed) {
  const CodeHelp* const help = find_code_help(failed.failure.code);
  std::string sentence(help == nullptr ? "unknown error" : help->meaning);
  if (!failed.failure.message.empty()) sentence += ": " + failed.failure.message;
  Problem problem{{0, 0}, std::move(sentence), {}};
  if (failed.statement == nullptr || failed.statement->tokens.empty()) return problem;
  const Token* const word = find_word(*failed.statement, failed.failure.message);
  problem.place = word != nullptr
                      ? place_of(*word)
                      : place_of(*failed.statement, {0, failed.statement->tokens.size()});
  return problem;
}

struct ForeignSign {
  std::string_view sign;
  std::string_view name;
  std::string_view meant;
};

constexpr ForeignSign foreign_signs[] = {
    {"，", "full-width comma", ","},
    {"（", "full-width parenthesis", "("},
    {"）", "full-width parenthesis", ")"},
    {"：", "full-width colon", ":"},
    {"；", "full-width semicolon", ";"},
    {"‘", "curved quote", "'"},
    {"’", "curved quote", "'"},
    {"“", "curved quote", "'"},
    {"”", "curved quote", "'"},
    {"、", "ideographic comma", ","},
    {"。", "ideographic full stop", ";"},
    {"＝", "full-width sign", "="},
    {"＞", "full-width sign", ">"},
    {"＜", "full-width sign", "<"},
    {"＋", "full-width sign", "+"},
    {"－", "full-width sign", "-"},
    {"＊", "full-width sign", "*"},
    {"／", "full-width sign", "/"},
    {"％", "full-width sign", "%"},
    {"＆", "full-width sign", "&"},
    {"｜", "full-width sign", "|"},
    {"！", "full-width sign", "!"},
    {"＇", "full-width quote", "'"},
    {"＂", "full-width quote", "'"},
    {"【", "full-width bracket", "("},
    {"】", "full-width bracket", ")"},
    {"≥", "character", ">="},
    {"≤", "character", "<="},
    {"≠", "character", "<>"},
    {"×", "character", "*"},
    {"÷", "character", "/"},
    {"−", "character", "-"},
    {"–", "dash", "-"},
    {"—", "dash", "-"},
    {"　", "full-width blank", " "},
    {"\xEF\xBB\xBF", "byte order mark", ""},
    {"\xE2\x80\x8B", "invisible blank", ""},
};

/// The letter or digit of ASCII that a full-width one stands for, 0 for other characters.
char plain_letter(std::string_view character) {
  if (character.size() != 3 || character[0] != '\xEF') return 0;
  const auto second = static_cast<unsigned char>(character[1]);
  const auto third = static_cast<unsigned char>(character[2]);
  if (second != 0xBC && second != 0xBD) return 0;
  const char plain = static_cast<char>(third - 0x60 + (second == 0xBD ? 0x40 : 0));
  return is_letter(plain) || is_digit(plain) ? plain : '\0';
}

/// What is to say about a character, without its place.
std::optional<Problem> explain_foreign(std::string_view character) {
  if (const char plain = plain_letter(character); plain != 0) {
    return Problem{{},
                   "a full-width letter '" + std::string(character) + "' is no letter of a word",
                   std::string("write '") + plain + "'"};
  }
  const auto* const row = std::ranges::find(foreign_signs, character, &ForeignSign::sign);
  if (row == std::end(foreign_signs)) return std::nullopt;
  const bool is_vowel = std::string_view("aeiou").find(row->name[0]) != absent;
  const std::string name = (is_vowel ? "an " : "a ") + std::string(row->name);
  if (row->meant.empty()) return Problem{{}, name + " is no sign of the language", "take it away"};
  const std::string sentence =
      name + " '" + std::string(character) + "' is no sign of the language";
  if (row->meant == "'") return Problem{{}, sentence, "write a straight quote: '"};
  if (row->meant == " ") return Problem{{}, sentence, "write a plain blank"};
  return Problem{{}, sentence, "write '" + std::string(row->meant) + "'"};
}

/// Full-width signs are letters of names, too. Where the library names a word, the sign must be in
/// it.
bool may_be_foreign(const Failure& failure) {
  const bool names_word = failure.code == 1 || failure.code == 2 || failure.code == 2013;
  return !names_word || std::ranges::any_of(failure.message, is_beyond_ascii);
}

std::string in_script(std::string_view message) {
  std::string text(message);
  for (char& c : text) {
    if (c == '@') c = ',';
    if (c == '?' || c == '^') c = '-';
    if (c == '`') c = '+';
  }
  return text;
}

/// The longest piece of a message that stands in the script: "MY~37" holds the name of a call.
std::string_view literal_piece(std::string_view message) {
  std::string_view longest;
  while (!message.empty()) {
    const size_t mark = std::min(message.find('~'), message.size());
    if (mark > longest.size()) longest = message.substr(0, mark);
    size_t behind = std::min(mark + 1, message.size());
    while (behind < message.size() && is_digit(message[behind])) ++behind;
    message.remove_prefix(behind);
  }
  return longest;
}

}  // namespace

std::optional<Problem> find_odd_form(const Reading& reading) {
  for (const Statement& statement : reading.statements) {
    const auto problems = check_form(reading, statement);
    if (!problems.empty()) return problems.front();
  }
  return std::nullopt;
}

std::string in_two_statements(const Reading& reading, const Statement& statement) {
  const std::string name = reading.text(statement, statement.name_range);
  const size_t begin = statement.items.empty() ? statement.tokens.size() : statement.items[0].begin;
  const std::string rest = reading.text(statement, {begin, statement.tokens.size()});
  return "write " + name + ":=" + reading.text(statement, statement.expression) + "; " + name +
         "," + rest + ";";
}

const Token* find_word(const Statement& statement, std::string_view word) {
  const auto found = std::ranges::find(statement.tokens, word, &Token::text);
  return found == statement.tokens.end() ? nullptr : &*found;
}

std::optional<Problem> find_foreign_sign(const Reading& reading, const Statement& statement) {
  for (const Token& token : statement.tokens) {
    if (token.kind != TokenKind::word) continue;
    const std::string_view word = reading.script.substr(token.begin, token.end - token.begin);
    for (size_t at = 0; at < word.size(); at += front_character(word.substr(at))) {
      const std::string_view character = word.substr(at, front_character(word.substr(at)));
      const auto problem = explain_foreign(character);
      if (!problem) continue;
      const size_t begin = token.begin + at;
      return Problem{{begin, begin + character.size()}, problem->sentence, problem->suggestion};
    }
  }
  return std::nullopt;
}

std::optional<Range> find_tokens(const Reading& reading, const Statement& statement,
                                 std::string_view message) {
  const std::string wanted = in_script(literal_piece(message));
  if (wanted.empty()) return std::nullopt;
  const std::string text = to_upper(reading.scan.slots[statement.number].text.bytes);
  std::optional<Range> first;
  for (size_t at = text.find(to_upper(wanted)); at != absent;
       at = text.find(to_upper(wanted), at + 1)) {
    const auto& tokens = statement.tokens;
    const auto begin = std::ranges::upper_bound(tokens, at, {}, &Token::position) - 1;
    const auto end = std::ranges::lower_bound(tokens, at + wanted.size(), {}, &Token::position);
    const Range range{static_cast<size_t>(begin - tokens.begin()),
                      static_cast<size_t>(end - tokens.begin())};
    const bool is_whole = begin->position == at &&
                          (end == tokens.end() ? text.size() : end->position) == at + wanted.size();
    const bool in_name = statement.is_named() && range.begin < statement.colon;
    if (is_whole && !in_name) return range;
    if (!first || is_whole) first = range;
  }
  return first;
}

Problem explain(const Reading& reading, const Failure& failure) {
  const bool known = failure.statement && *failure.statement < reading.statements.size();
  const Case failed{reading, failure, known ? &reading.statements[*failure.statement] : nullptr};
  if (failed.statement != nullptr && may_be_foreign(failure)) {
    if (auto sign = find_foreign_sign(reading, *failed.statement)) return *sign;
  }
  const auto* const row = std::ranges::find(rows, failure.code, &Explainer::code);
  if (row != std::end(rows)) {
    if (auto problem = row->explain(failed)) return *problem;
  }
  return in_plain_words(failed);
}

}  // namespace quor_advice
