// Words that nothing defines: typing errors, names out of order, and signs that were read as
// letters.
#include <algorithm>
#include <iterator>

#include "elsewhere.h"
#include "explain.h"
#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

/// A word at fault, alone between its neighbours.
struct Word {
  const Case& failed;
  size_t index;

  const Statement& statement() const { return *failed.statement; }
  const Token& token() const { return statement().tokens[index]; }
  Problem problem(std::string sentence, std::string suggestion = {}) const {
    return {place_of(token()), std::move(sentence), std::move(suggestion)};
  }
  Problem undefined(std::string suggestion) const {
    return problem("nothing defines " + failed.text(token()), std::move(suggestion));
  }
};

using ExplainWord = std::optional<Problem> (*)(const Word& word);

std::optional<Problem> explain_order(const Word& word) {
  const Reading& reading = word.failed.reading;
  const std::string& name = word.token().text;
  const auto line = reading.lines.find(name);
  if (line == reading.lines.end()) return std::nullopt;
  if (line->second == word.statement().number) {
    return word.problem(name + " reads itself inside a call, where it isn't known yet",
                        "EMA, SMA or DMA may serve, or SET into a line above");
  }
  if (line->second < word.statement().number) return std::nullopt;
  const Statement& other = reading.statements[line->second];
  const size_t below = reading.line_of(other.tokens.front().begin);
  const bool in_line = below == reading.line_of(word.token().begin);
  return word.problem(name + (in_line ? " is declared further on in this line"
                                      : " is declared below, in line " + std::to_string(below)),
                      "move its declaration above this use");
}

std::optional<Problem> explain_exponent(const Word& word) {
  const std::string& text = word.token().text;
  const Token* const sign = word.statement().token(word.index + 1);
  const Token* const digits = word.statement().token(word.index + 2);
  if (sign == nullptr || digits == nullptr || !text.ends_with('E')) return std::nullopt;
  if (!sign->is_sign("-") && !sign->is_sign("+")) return std::nullopt;
  const auto value = to_number(text + (sign->text == "-" ? "-" : "") + digits->text);
  if (!value || !to_number(text.substr(0, text.size() - 1))) return std::nullopt;
  return Problem{{word.token().begin, digits->end},
                 "an exponent takes no sign",
                 "write " + number_text(*value)};
}

std::optional<Problem> explain_torn_name(const Word& word) {
  const std::string& text = word.token().text;
  for (const Token& other : word.statement().tokens) {
    if (other.kind != TokenKind::word || !is_bare_word(other.text) || other.text == text) continue;
    if (text.find(other.text) == absent) continue;
    return word.problem("the name " + text + " holds the word " + other.text +
                            ", which stands in this statement too and is found inside it",
                        "take another name");
  }
  return std::nullopt;
}

/// A;=C for A:=C.
std::optional<Problem> explain_split_assignment(const Word& word) {
  const Reading& reading = word.failed.reading;
  const size_t next = word.statement().number + 1;
  if (next >= reading.statements.size()) return std::nullopt;
  const auto& tokens = reading.statements[next].tokens;
  if (tokens.empty() || !tokens.front().is_sign("=")) return std::nullopt;
  const size_t end = reading.scan.slots[word.statement().number].end;
  return Problem{{end, end + 1}, "this ';' ends the statement in front of '='", "write ':='"};
}

std::optional<Problem> explain_comparison_for_name(const Word& word) {
  const Token* const sign = word.statement().token(word.index + 1);
  if (word.index != 0) return std::nullopt;
  if (sign == nullptr) return explain_split_assignment(word);
  if (!sign->is_sign("=")) return std::nullopt;
  const std::string name = word.failed.text(word.token());
  return word.problem("nothing defines " + name + ": '=' compares, it declares no name",
                      "write " + name + ":= or " + name + ":");
}

std::optional<Problem> explain_branch_word(const Word& word) {
  const std::string& text = word.token().text;
  if (text != "THEN" && text != "ELSE" && text != "ELSEIF") return std::nullopt;
  return word.problem(text + " is no word of the language", "write IF(condition,a,b)");
}

const Call* innermost_call(const Word& word) {
  const Call* innermost = nullptr;
  for (const Call& call : word.statement().calls) {
    const bool holds = call.open < word.index && (call.close == absent || call.close > word.index);
    if (holds) innermost = &call;
  }
  return innermost;
}

std::optional<Problem> explain_style_word(const Word& word) {
  const std::string& text = word.token().text;
  if (!is_style(text) || text == "SOLID") return std::nullopt;
  const Call* const call = innermost_call(word);
  const std::string name = call == nullptr ? "" : word.statement().tokens[call->word].text;
  const auto roles = arguments_of_form(name);
  if (is_colour(text) && std::ranges::find(roles, "COLOR") != roles.end()) {
    return word.problem(name + " takes its colour at another place",
                        "write " + std::string(find_word_help(name)->form));
  }
  return word.problem(text + " is a style item",
                      "style items stand behind the comma of an output line");
}

std::optional<Problem> explain_short_word(const Word& word) {
  const std::string& text = word.token().text;
  if (!is_short_form(text)) return std::nullopt;
  return word.problem(text + " stands behind a comma, with its condition in front",
                      "write condition," + text);
}

/// C.5 for C,5, and signs in the middle of a word.
std::optional<Problem> explain_inner_sign(const Word& word) {
  const std::string& text = word.token().text;
  const size_t point = text.find('.');
  const bool parts = point != absent && point > 0 && point + 1 < text.size();
  if (parts && !is_digit(text[0]) && innermost_call(word) != nullptr) {
    const std::string shown = word.failed.text(word.token());
    return word.undefined("did you mean " + shown.substr(0, point) + "," + shown.substr(point + 1) +
                          "?");
  }
  const size_t sign = text.find_first_of("[]{}#$\\~");
  if (sign == absent) return std::nullopt;
  const bool bracket = text[sign] == '[' || text[sign] == ']';
  return Problem{{word.token().begin + sign, word.token().begin + sign + 1},
                 std::string("'") + text[sign] + "' is no sign of the language",
                 bracket ? "write parentheses; REF(x,n) reads earlier bars" : ""};
}

/// MA5, where nothing of that name is declared.
std::optional<Problem> explain_period_in_name(const Word& word) {
  const std::string& text = word.token().text;
  const size_t letters = text.find_last_not_of("0123456789") + 1;
  if (letters == text.size()) return std::nullopt;
  const PeriodArgument* const period = find_period(text.substr(0, letters));
  if (period == nullptr || period->index != 1 || is_function(text)) return std::nullopt;
  return word.undefined("declare it above, such as " + text + ":=" + text.substr(0, letters) +
                        "(C," + text.substr(letters) + ");");
}

/// ICO1 to ICO33, which DRAWICON takes as a text though its form doesn't say so.
bool names_sign(const std::string& text) {
  return text.starts_with("ICO") && text.size() > 3 &&
         std::ranges::all_of(text.substr(3), is_digit);
}

bool takes_text(const Word& word) {
  if (names_sign(word.token().text)) return true;

  const Call* const innermost = innermost_call(word);
  if (innermost == nullptr) return false;
  const WordHelp* const help = find_word_help(word.statement().tokens[innermost->word].text);
  return help != nullptr && help->form.find('\'') != absent;
}

/// A word alone where a call has its text: DRAWTEXT(C>O,H,buy).
std::optional<Problem> explain_bare_text(const Word& word) {
  const Call* const call = innermost_call(word);
  if (call == nullptr) return std::nullopt;
  const Statement& statement = word.statement();
  const auto roles = arguments_of_form(statement.tokens[call->word].text);
  for (size_t i = 0; i < std::min(roles.size(), call->arguments.size()); ++i) {
    if (!roles[i].starts_with('\'')) continue;
    if (lone_token(statement, call->arguments[i]) != &word.token()) continue;
    return word.undefined("a text stands in single quotes: '" + word.failed.text(word.token()) +
                          "'");
  }
  return std::nullopt;
}

/// A name of the script's own that is near is sooner meant.
std::optional<Problem> explain_from_elsewhere(const Word& word) {
  const std::string& text = word.token().text;
  std::string advice = advice_for_elsewhere(text);
  if (advice.empty()) return std::nullopt;
  if (nearest(text, Vocabulary::names, word.failed.reading.names())) return std::nullopt;
  return word.undefined(std::move(advice));
}

std::optional<Problem> explain_bracket(const Word& word) {
  return explain_index(word.failed.reading, word.token());
}

/// N of PARAM N:5, which declares PARAMN.
std::optional<Problem> explain_declared_with_word(const Word& word) {
  for (const Statement& statement : word.failed.reading.statements) {
    if (statement.number >= word.statement().number) break;
    const bool declares = statement.is_named() && statement.name_range.size() == 2 &&
                          statement.tokens[1].text == word.token().text;
    if (!declares) continue;
    if (auto problem = explain_declaring_word(word.failed.reading, statement)) return problem;
  }
  return std::nullopt;
}

std::optional<Problem> explain_by_likeness(const Word& word) {
  const std::string& text = word.token().text;
  if (is_digit(text[0])) {
    return word.problem(word.failed.text(word.token()) + " is neither a number nor a name");
  }
  const bool colour = is_colour(text);
  const auto near = nearest(text, colour ? Vocabulary::colour : Vocabulary::expression,
                            colour ? std::vector<std::string>() : word.failed.reading.names());
  if (near) return word.undefined("did you mean " + *near + "?");
  const std::string shown = word.failed.text(word.token());
  if (takes_text(word)) return word.undefined("a text stands in single quotes: '" + shown + "'");
  const Token* const next = word.statement().token(word.index + 1);
  if (next != nullptr && next->kind == TokenKind::open) {
    return word.problem("there is no function " + shown);
  }
  return word.undefined("declare it above, or as a constant: CONST " + shown + ":number;");
}

constexpr ExplainWord word_steps[] = {
    explain_exponent,       explain_torn_name,  explain_order,          explain_comparison_for_name,
    explain_branch_word,    explain_style_word, explain_short_word,     explain_declared_with_word,
    explain_bracket,        explain_bare_text,  explain_from_elsewhere, explain_inner_sign,
    explain_period_in_name, explain_by_likeness};

/// The short form of a named statement; authors name what has no value.
std::optional<Problem> explain_named_form(const Case& failed) {
  const Statement& statement = *failed.statement;
  if (!statement.is_named()) return std::nullopt;
  for (const Range item : statement.items) {
    if (item.empty()) continue;
    const Token& word = statement.tokens[item.begin];
    if (word.text != "WORD" && word.text != "ICON" && word.text != "SOUND") continue;
    return Problem{place_of(word), word.text + " can't stand in a statement with a name",
                   in_two_statements(failed.reading, statement)};
  }
  return std::nullopt;
}

std::optional<Problem> explain_constant_statement(const Case& failed) {
  const Statement& statement = *failed.statement;
  if (statement.form != Form::constant) return std::nullopt;
  for (size_t i = 1; i < statement.tokens.size(); ++i) {
    if (!statement.tokens[i].gap.has_line_end) continue;
    const Token& before = statement.tokens[i - 1];
    return missing_end(failed.reading, before);
  }
  return Problem{place_of(statement, {0, statement.tokens.size()}),
                 "a constant is a name, a ':' and a number", "write CONST N:5;"};
}

/// A drawn line must be able to read its own name.
std::optional<Problem> explain_signs_in_name(const Case& failed) {
  const Statement& statement = *failed.statement;
  if (statement.form != Form::line) return std::nullopt;
  for (size_t i = 0; i < statement.colon; ++i) {
    const Token& token = statement.tokens[i];
    if (token.gap.has_line_end) return std::nullopt;
    if (token.kind != TokenKind::sign && token.kind != TokenKind::comma) continue;
    return Problem{place_of(token), "the name of a line can't hold '" + failed.text(token) + "'",
                   "take another name"};
  }
  return std::nullopt;
}

/// C>O,NOTICE('C<O'), whose name is torn at the sign.
std::optional<Problem> explain_sign_in_notice(const Case& failed) {
  const Statement& statement = *failed.statement;
  if (find_word(statement, "NOTICE") == nullptr) return std::nullopt;
  for (const Token& token : statement.tokens) {
    const size_t sign = token.kind == TokenKind::text ? token.text.find_first_of("<>=") : absent;
    if (sign == absent) continue;
    return Problem{{token.begin + sign, token.begin + sign + 1},
                   std::string("the name of a notice can't hold '") + token.text[sign] + "'",
                   "take it away, or write it in words"};
  }
  return std::nullopt;
}

/// IF(C>O) C ELSE O
std::optional<Problem> explain_choice(const Statement& statement) {
  const bool has_else =
      find_word(statement, "ELSE") != nullptr || find_word(statement, "THEN") != nullptr;
  const Token* const choice = find_word(statement, "IF");
  if (!has_else || choice == nullptr) return std::nullopt;
  const Token* const next =
      statement.token(static_cast<size_t>(choice - statement.tokens.data()) + 1);
  if (next == nullptr || next->kind != TokenKind::open) return std::nullopt;
  return Problem{place_of(*choice), "THEN and ELSE are no words of the language",
                 "write IF(COND,A,B)"};
}

std::optional<Problem> explain_look_alikes(const Case& failed) {
  for (const Token& token : failed.statement->tokens) {
    if (!failed.reading.lines.contains(token.text)) {
      if (auto problem = explain_look_alike(failed.reading, token)) return problem;
    }
  }
  return std::nullopt;
}

std::optional<Problem> explain_text(const Case& failed, const Token& text) {
  if (text.text.find_first_of("()@") != absent) return explain_parentheses(failed);
  return Problem{
      place_of(text), "a text is no value: it can only be a whole argument of a call", {}};
}

/// The problem of form that lies at the word at fault, or the first one if there is no such word.
std::optional<Problem> explain_by_form(const Case& failed, const std::optional<Range>& tokens) {
  const auto problems = check_form(failed.reading, *failed.statement);
  const bool is_lone = tokens && tokens->size() == 1;
  if (!is_lone) {
    if (problems.empty()) return std::nullopt;
    return problems.front();
  }
  const Token& token = failed.statement->tokens[tokens->begin];
  for (const Problem& problem : problems) {
    // A statement that has swallowed the next one explains whatever comes behind.
    const bool is_end = problem.sentence.starts_with("a ';'");
    if (is_end && problem.place.begin < token.begin) return problem;
    const bool touches = problem.place.begin <= token.end && problem.place.end >= token.begin;
    if (touches) return problem;
  }
  return std::nullopt;
}

/// For messages that don't stand in the script as they are.
std::optional<size_t> first_unknown_word(const Case& failed) {
  const Statement& statement = *failed.statement;
  for (size_t i = statement.expression.begin; i < statement.tokens.size(); ++i) {
    const Token& token = statement.tokens[i];
    const bool known = token.kind != TokenKind::word || is_function(token.text) ||
                       is_field(token.text) || is_style(token.text) || is_short_form(token.text) ||
                       failed.reading.lines.contains(token.text) ||
                       failed.reading.constants.contains(token.text);
    if (!known) return i;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Problem> explain_word(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  if (auto problem = explain_constant_statement(failed)) return problem;
  if (auto problem = explain_sign_in_notice(failed)) return problem;
  if (auto problem = explain_look_alikes(failed)) return problem;
  if (auto problem = explain_declaring_word(failed.reading, *failed.statement)) return problem;
  if (auto problem = explain_choice(*failed.statement)) return problem;
  if (auto problem = explain_named_form(failed)) return problem;
  if (auto problem = explain_signs_in_name(failed)) return problem;
  const auto tokens = find_tokens(failed.reading, *failed.statement, failed.failure.message);
  if (auto problem = explain_by_form(failed, tokens)) return problem;
  const auto index = tokens ? std::optional(tokens->begin) : first_unknown_word(failed);
  if (!index) return std::nullopt;
  const Word word{failed, *index};
  if (word.token().kind == TokenKind::text) return explain_text(failed, word.token());
  for (const ExplainWord step : word_steps) {
    if (auto problem = step(word)) return problem;
  }
  return std::nullopt;
}

}  // namespace quor_advice
