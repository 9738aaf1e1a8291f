// Calls, names and short forms that the library refuses.
#include <algorithm>
#include <array>
#include <iterator>

#include "elsewhere.h"
#include "explain.h"
#include "letters.h"
#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

std::string form_of(std::string_view word) {
  if (word == "GETPRICE" || word == "GETSTOCKPRICE") return std::string(word) + "('CODE','FIELD')";
  const WordHelp* const help = find_word_help(word);
  return help == nullptr ? std::string() : std::string(help->form);
}

std::string write_form(std::string_view word) {
  const std::string form = form_of(word);
  return form.empty() ? form : "write " + form;
}

std::optional<Problem> parenthesis_in_quotes(const Case& failed) {
  for (const Token& token : failed.statement->tokens) {
    if (token.kind != TokenKind::text) continue;
    const size_t mark = token.text.find_first_of("()");
    if (mark == absent) continue;
    return Problem{{token.begin + mark, token.begin + mark + 1},
                   "a parenthesis inside quotes counts as one of the call's",
                   "take it away, or write a full-width one"};
  }
  return std::nullopt;
}

std::optional<Problem> at_sign_in_quotes(const Statement& statement) {
  for (const Token& token : statement.tokens) {
    const size_t mark = token.kind == TokenKind::text ? token.text.find('@') : absent;
    if (mark == absent) continue;
    return Problem{{token.begin + mark, token.begin + mark + 1},
                   "an '@' inside quotes cuts the text in two",
                   "take it away"};
  }
  return std::nullopt;
}

std::string count_words(int least, int most) {
  const auto arguments = [](int count) { return count == 1 ? " argument" : " arguments"; };
  if (most == 0) return "no arguments";
  if (most < 0) return "at least " + std::to_string(least) + arguments(least);
  if (least == most) return std::to_string(least) + arguments(least);
  const std::string link = most == least + 1 ? " or " : " to ";
  return std::to_string(least) + link + std::to_string(most) + arguments(most);
}

size_t given_arguments(const Call& call) {
  return static_cast<size_t>(
      std::ranges::count_if(call.arguments, [](Range r) { return !r.empty(); }));
}

bool fits(const Call& call, int least, int most) {
  const auto given = static_cast<int>(given_arguments(call));
  return given >= least && (most < 0 || given <= most);
}

const Call* miscounted_call(const Statement& statement, std::string_view word, int least,
                            int most) {
  const Call* any = nullptr;
  for (const Call& call : statement.calls) {
    if (statement.tokens[call.word].text != word) continue;
    if (!fits(call, least, most)) return &call;
    any = &call;
  }
  return any;
}

/// Items behind a lone call become arguments of it; without a name only drawings take any.
std::optional<Problem> explain_items(const Case& failed, const std::string& word) {
  const Statement& statement = *failed.statement;
  const size_t first = statement.items.front().begin;
  if (first >= statement.tokens.size()) return std::nullopt;
  const Place place = place_of(statement, {first, statement.tokens.size()});
  const Token& item = statement.tokens[first];
  const std::string meant = item_from_elsewhere(item.text);
  if (!meant.empty()) {
    return Problem{place_of(item), item.text + " is no signal, mark or style",
                   "did you mean " + meant + "?"};
  }
  if (acts(item.text) && !is_short_form(item.text)) {
    return Problem{place_of(item), item.text + " behind a comma does nothing",
                   "give it a statement of its own"};
  }
  if (item.text == "WORD") {
    const std::string condition = failed.reading.text(statement, statement.expression);
    return Problem{place_of(item), "the condition of WORD can't hold a ','",
                   "write X:=" + condition + "; and then X," + failed.reading.text(place) + ";"};
  }
  const Place whole = place_of(statement, {0, statement.tokens.size()});
  return Problem{place, "without a name in front this counts as an argument of " + word,
                 "write NAME:" + failed.reading.text(whole) + ";"};
}

}  // namespace

std::optional<Problem> explain_parentheses(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  const Statement& statement = *failed.statement;
  for (Problem& problem : check_form(failed.reading, statement)) {
    if (problem.sentence.find("partner") != absent ||
        problem.sentence.find("parenthes") != absent) {
      return std::move(problem);
    }
  }
  if (auto problem = at_sign_in_quotes(statement)) return problem;
  if (auto problem = parenthesis_in_quotes(failed)) return problem;
  const Token* const word = find_word(statement, failed.failure.message);
  if (word == nullptr) return std::nullopt;
  return Problem{place_of(*word), word->text + " takes its arguments in parentheses",
                 write_form(word->text)};
}

std::optional<Problem> explain_count(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  const Statement& statement = *failed.statement;
  const std::string& word = failed.failure.message;
  const bool is_quote = word == "GETPRICE" || word == "GETSTOCKPRICE";
  const WordHelp* const help = find_word_help(word);
  if (help == nullptr && !is_quote) return std::nullopt;
  const int least = is_quote ? 1 : help->least;
  const int most = is_quote ? 2 : help->most;
  const Call* const call = miscounted_call(statement, word, least, most);
  if (call == nullptr) return std::nullopt;
  if (fits(*call, least, most) && !statement.items.empty()) return explain_items(failed, word);
  const size_t end =
      call->close == absent ? statement.tokens.back().end : statement.tokens[call->close].end;
  const size_t given = given_arguments(*call);
  return Problem{{statement.tokens[call->word].begin, end},
                 word + " takes " + count_words(least, most) + ": " + form_of(word) + ", and has " +
                     std::to_string(given) + " here",
                 (word == "MAX" || word == "MIN") && given > 2
                     ? word + "1 takes any number of arguments"
                     : std::string()};
}

std::optional<Problem> explain_name(const Case& failed) {
  if (failed.statement == nullptr || failed.statement->name_range.empty()) return std::nullopt;
  const Reading& reading = failed.reading;
  const Statement& statement = *failed.statement;
  for (Problem& problem : check_form(reading, statement)) {
    if (problem.sentence.starts_with("a ';'")) return std::move(problem);
  }
  const Place place = place_of(statement, statement.name_range);
  const std::string name = reading.text(place);
  const std::string other = "take another name";
  if (failed.failure.code == 12) {
    return Problem{place, name + " is a function and can't be a name", other};
  }
  if (failed.failure.code == 13 && statement.form == Form::constant) {
    return Problem{place, "a constant is one name and one number",
                   "give each a statement of its own: CONST N:5;CONST M:6;"};
  }
  if (failed.failure.code == 13) {
    const bool has_call = name.find('~') == absent;
    return Problem{place, has_call ? "a name can't hold a call" : "a name can't hold '~'",
                   has_call ? "the name stands in front of ':', the expression behind it" : other};
  }
  const auto first = reading.lines.find(statement.name);
  if (first != reading.lines.end() && first->second != statement.number) {
    const Statement& earlier = reading.statements[first->second];
    return Problem{place,
                   name + " is declared already, in line " +
                       std::to_string(reading.line_of(earlier.tokens.front().begin)),
                   other};
  }
  return Problem{place, name + " is the word of a bar field and can't be a name", other};
}

std::optional<Problem> explain_named_signal(const Case& failed) {
  for (const Statement& statement : failed.reading.statements) {
    if (!statement.is_named()) continue;
    for (size_t i = statement.colon + 1; i < statement.tokens.size(); ++i) {
      const Token& token = statement.tokens[i];
      if (token.kind != TokenKind::word || (token.text != "NOTICE" && !is_trade_word(token.text)))
        continue;
      for (Problem& problem : check_form(failed.reading, statement)) {
        if (problem.sentence.starts_with("a ';'")) return std::move(problem);
      }
      return Problem{{statement.tokens[0].begin, statement.tokens[statement.colon].end},
                     "a statement with " + token.text + " takes no name in front",
                     in_two_statements(failed.reading, statement)};
    }
  }
  return find_odd_form(failed.reading);
}

std::optional<Problem> explain_branch(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  const auto& tokens = failed.statement->tokens;
  for (size_t i = 1; i < tokens.size(); ++i) {
    if (tokens[i].text != failed.failure.message || tokens[i - 1].kind != TokenKind::comma)
      continue;
    return Problem{place_of(tokens[i]), tokens[i].text + " can't stand behind a comma",
                   tokens[i].text == "IFN" ? "give it a line of its own"
                                           : "write IFF, or give it a line of its own"};
  }
  return std::nullopt;
}

std::optional<Problem> explain_second_output(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  size_t count = 0;
  for (const Call& call : failed.statement->calls) {
    const Token& word = failed.statement->tokens[call.word];
    if (!acts(word.text) || ++count < 2) continue;
    return Problem{place_of(word), "a second drawing or signal in one statement",
                   "give " + word.text + " a statement of its own"};
  }
  return std::nullopt;
}

std::optional<Problem> explain_look_ahead(const Case& failed) {
  constexpr std::array<std::string_view, 12> looking = {
      "WAVEPEAK", "WAVEPEAK1", "WAVEVALLEY", "WAVEVALLEY1", "BACKSET", "REFX1",
      "PEAK",     "PEAKBARS",  "TROUGH",     "TROUGHBARS",  "ZIGZAG",  "REFX"};
  const Reading& reading = failed.reading;
  if (failed.statement == nullptr) return std::nullopt;
  const Token* const signal = find_word(*failed.statement, failed.failure.message);
  if (signal == nullptr) return std::nullopt;
  for (const Statement& statement : reading.statements) {
    for (const Token& token : statement.tokens) {
      if (std::ranges::find(looking, token.text) == looking.end()) continue;
      return Problem{place_of(*signal),
                     signal->text + " can't stand in a script that looks ahead, as " + token.text +
                         " in line " + std::to_string(reading.line_of(token.begin)) + " does",
                     "take away one of the two"};
    }
  }
  return std::nullopt;
}

}  // namespace quor_advice
