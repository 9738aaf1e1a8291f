// Short forms and constants out of bounds, and what stops a calculation.
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <vector>

#include "explain.h"
#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

constexpr size_t longest_notice = 10;  ///< in UTF-16 units

struct ShortForm {
  std::string_view word;
  std::string_view lacks;  ///< with nothing in front
  std::string_view form;
};

constexpr ShortForm short_forms[] = {
    {"SOUND", "its condition", "condition,SOUND('A')"},
    {"ICON", "its condition", "condition,ICON(1,'ICO1')"},
    {"WORD", "its condition", "condition,WORD(1,'text')"},
    {"NOTICE", "its condition", "condition,NOTICE('name')"},
    {"STICK", "its value", "value,STICK"},
    {"CROSSDOT", "its value", "value,CROSSDOT"},
    {"CIRCLEDOT", "its value", "value,CIRCLEDOT"},
    {"CJLVOL", "", "CJLVOL(0) or CJLVOL(1)"},
};

std::string short_form_of(std::string_view word) {
  const auto* const row = std::ranges::find(short_forms, word, &ShortForm::word);
  if (row != std::end(short_forms)) return "write " + std::string(row->form);
  return is_trade_word(word) ? "write condition," + std::string(word) : std::string();
}

/// The word of a short form in the statement that a message names at its end.
const Token* short_word(const Case& failed) {
  if (failed.statement == nullptr) return nullptr;
  const std::string& message = failed.failure.message;
  for (const Token& token : failed.statement->tokens) {
    if (!is_short_form(token.text) && token.text != "CJLVOL") continue;
    if (message.ends_with(token.text) || message.starts_with(token.text + ".")) return &token;
  }
  // "STICK" stands for every stick word.
  for (const Token& token : failed.statement->tokens) {
    if (token.kind == TokenKind::word && token.text.ends_with("STICK")) return &token;
  }
  return nullptr;
}

const Call* call_of(const Statement& statement, const Token& word) {
  const auto index = static_cast<size_t>(&word - statement.tokens.data());
  const auto call = std::ranges::find(statement.calls, index, &Call::word);
  return call == statement.calls.end() ? nullptr : &*call;
}

Place place_of_argument(const Statement& statement, const Token& word, size_t index) {
  const Call* const call = call_of(statement, word);
  if (call == nullptr || call->arguments.size() <= index || call->arguments[index].empty()) {
    return place_of(word);
  }
  return place_of(statement, call->arguments[index]);
}

/// A text argument without quotes or in the wrong ones.
Problem unquoted(const Case& failed, const Token& word, size_t index) {
  const Place place = place_of_argument(*failed.statement, word, index);
  std::string text = failed.reading.text(place);
  if (place.begin == word.begin) {
    return {place, word.text + " takes a text in single quotes", short_form_of(word.text)};
  }
  std::erase(text, '"');
  return {place, word.text + " takes its text in single quotes", "write '" + text + "'"};
}

size_t utf16_units(std::string_view text) {
  size_t units = 0;
  for (size_t i = 0; i < text.size(); i += character_size(text[i])) {
    units += character_size(text[i]) == 4 ? 2 : 1;
  }
  return units;
}

Problem explain_notice(const Case& failed, const Token& word) {
  const Statement& statement = *failed.statement;
  const Call* const call = call_of(statement, word);
  const bool behind_comma =
      &word != statement.tokens.data() && (&word - 1)->kind == TokenKind::comma;
  if (!behind_comma) {
    return {place_of(word), "NOTICE lacks its condition in front of a comma",
            short_form_of("NOTICE")};
  }
  if (call == nullptr || call->arguments.empty()) {
    return {place_of(word), "NOTICE lacks its name", short_form_of("NOTICE")};
  }
  const Range name = call->arguments[0];
  const Token& token = statement.tokens[name.begin];
  if (name.size() != 1 || token.kind != TokenKind::text) return unquoted(failed, word, 0);
  const size_t units = utf16_units(token.text.substr(1, token.text.size() - 2));
  if (units == 0)
    return {place_of(token), "the name of a notice is empty", "give it 1 to 10 characters"};
  if (units > longest_notice) {
    return {place_of(token),
            "the name of a notice has 10 characters at most, this one has " + std::to_string(units),
            "shorten it"};
  }
  return {place_of(word), "NOTICE isn't written as it must be", short_form_of("NOTICE")};
}

Problem explain_trade_word(const Case& failed, const Token& word) {
  const Call* const call = call_of(*failed.statement, word);
  const bool behind_comma =
      &word != failed.statement->tokens.data() && (&word - 1)->kind == TokenKind::comma;
  if (!behind_comma) {
    return {place_of(word), word.text + " lacks its condition in front of a comma",
            short_form_of(word.text)};
  }
  if (call == nullptr) {
    return {place_of(word), word.text + " takes nothing or a quantity in parentheses",
            "write " + word.text + " or " + word.text + "(2)"};
  }
  return {place_of_argument(*failed.statement, word, 0),
          "the quantity of " + word.text + " must be a number of 1 and more",
          "write " + word.text + "(1)"};
}

/// The item behind a message such as get_num_val.ALIGN.
std::optional<Problem> explain_numbered_item(const Case& failed, const std::string& name) {
  for (const Token& token : failed.statement->tokens) {
    const std::string bounds = bounds_of_style(token.text);
    if (bounds.empty() || !token.text.starts_with(name) || is_style(token.text)) continue;
    return Problem{place_of(token), failed.text(token) + " is out of bounds", "write " + bounds};
  }
  return std::nullopt;
}

/// A message such as GOLDENLINEGOLDENLINE, of a word whose last argument is null.
std::optional<Problem> explain_doubled_word(const Case& failed, const std::string& message) {
  const std::string name = message.substr(0, message.size() / 2);
  const WordHelp* const help = find_word_help(name);
  const Token* const word = find_word(*failed.statement, name);
  if (message != name + name || help == nullptr || word == nullptr) return std::nullopt;
  const size_t last = arguments_of_form(name).size() - 1;
  return Problem{place_of_argument(*failed.statement, *word, last),
                 "the last argument of " + name + " is null or no number",
                 "it is written " + std::string(help->form)};
}

/// A message such as DRAWANGLELINE.RATIO names a word and what it was given wrongly.
std::optional<Problem> explain_suffix(const Case& failed) {
  const std::string& message = failed.failure.message;
  const size_t point = message.find('.');
  if (failed.statement == nullptr) return std::nullopt;
  if (point == absent) return explain_doubled_word(failed, message);
  const std::string name = message.substr(point + 1);
  const Token* const word = find_word(*failed.statement, message.substr(0, point));
  if (word == nullptr) return explain_numbered_item(failed, name);
  const auto names = arguments_of_form(word->text);
  const auto index =
      static_cast<size_t>(std::ranges::find_if(names,
                                               [&name](std::string_view role) {
                                                 return role == name || role == "'" + name + "'";
                                               }) -
                          names.begin());
  if (word->text == "DRAWLASTBARTEXT" && name == "TEXT") {
    return Problem{place_of_argument(*failed.statement, *word, index),
                   "DRAWLASTBARTEXT takes a text in single quotes",
                   "for a number write DRAWLASTBARNUMBER(PRICE,NUMBER,DECIMALS,COLOR)"};
  }
  const WordHelp* const help = find_word_help(word->text);
  return Problem{place_of_argument(*failed.statement, *word, index),
                 name + " of " + word->text + " is out of bounds or null",
                 help == nullptr ? "" : "it is written " + std::string(help->form)};
}

/// DRAWICON(C>O,1,L): told by what the three arguments give.
std::optional<Problem> explain_sign_order(const Case& failed, const Call& call) {
  const Statement& statement = *failed.statement;
  if (call.close == absent || call.arguments.size() != 3) return std::nullopt;
  if (what_gives(failed.reading, statement, call.arguments[2]) != Gives::price) return std::nullopt;
  std::string condition = "1";
  std::string price;
  std::string sign;
  for (const Range argument : call.arguments) {
    const Gives gives = what_gives(failed.reading, statement, argument);
    const std::string text = failed.reading.text(statement, argument);
    if (gives == Gives::condition) condition = text;
    if (gives == Gives::price) price = text;
    if (gives == Gives::constant) sign = text;
  }
  if (price.empty() || sign.empty()) return std::nullopt;
  const std::string& word = statement.tokens[call.word].text;
  return Problem{{statement.tokens[call.word].begin, statement.tokens[call.close].end},
                 word + " takes its condition, the price and the sign in this order",
                 "write " + word + "(" + condition + "," + price + "," + sign + ")"};
}

std::optional<Problem> explain_sign(const Case& failed) {
  const Token* word = find_word(*failed.statement, failed.failure.message);
  if (word == nullptr) word = find_word(*failed.statement, "ICON");  // which becomes DRAWICON
  if (word == nullptr) return std::nullopt;
  const Call* const call = call_of(*failed.statement, *word);
  if (call != nullptr && word->text == "DRAWICON") {
    if (auto problem = explain_sign_order(failed, *call)) return problem;
  }
  const size_t last = call == nullptr || call->arguments.empty() ? 0 : call->arguments.size() - 1;
  return Problem{place_of_argument(*failed.statement, *word, last),
                 word->text + " knows the signs 1 to 33", "write 1 to 33, or 'ICO1' to 'ICO33'"};
}

/// GETPRICE and another call in one statement, which the library reads as its field.
std::optional<Problem> explain_quote_beside_call(const Case& failed) {
  const Call* quote = nullptr;
  for (const Call& call : failed.statement->calls) {
    const Token& word = failed.statement->tokens[call.word];
    const bool is_quote = word.text == "GETPRICE" || word.text == "GETSTOCKPRICE";
    if (quote != nullptr) {
      const Token& told = is_quote ? word : failed.statement->tokens[quote->word];
      return Problem{place_of(told),
                     is_quote ? "a second " + word.text + " in one statement"
                              : "no other call may stand behind " + told.text,
                     "give " + told.text + " a line of its own and calculate with its name"};
    }
    if (is_quote) quote = &call;
  }
  return std::nullopt;
}

std::optional<Problem> explain_quote_field(const Case& failed) {
  if (auto problem = explain_quote_beside_call(failed)) return problem;
  const std::string& message = failed.failure.message;
  const size_t point = message.find('.');
  const std::string field = point == absent ? message : message.substr(point + 1);
  for (const Token& token : failed.statement->tokens) {
    if (token.kind != TokenKind::text && token.kind != TokenKind::word) continue;
    if (to_upper(token.text) != field && to_upper(token.text) != "'" + field + "'") continue;
    const auto near = nearest(field, Vocabulary::quote);
    std::string suggestion = near ? "did you mean " + *near + "?" : std::string();
    if (field == "CLOSE" || field == "LAST" || field == "PRICE")
      suggestion = "the last price is NEW";
    return Problem{place_of(token), "a quote has no field " + field, std::move(suggestion)};
  }
  return std::nullopt;
}

/// The library may name the first statement for an item of a later one. Null where no statement
/// has the item; one that has it whole is sooner meant than one in which it is a part of a word.
const Statement* statement_with_item(const Case& failed, const std::string& item) {
  std::vector<const Statement*> statements = {failed.statement};
  for (const Statement& statement : failed.reading.statements) statements.push_back(&statement);
  const auto whole = std::ranges::find_if(statements, [&item](const Statement* statement) {
    return find_word(*statement, item) != nullptr;
  });
  if (whole != statements.end()) return *whole;
  const auto part = std::ranges::find_if(statements, [&](const Statement* statement) {
    return find_tokens(failed.reading, *statement, item).has_value();
  });
  return part == statements.end() ? nullptr : *part;
}

std::optional<Problem> explain_colour(const Case& failed) {
  for (const Call& call : failed.statement->calls) {
    if (auto problem = find_misplaced_text(*failed.statement, call)) return problem;
  }
  const Statement* const statement = statement_with_item(failed, failed.failure.message);
  if (statement == nullptr) return std::nullopt;
  if (statement != failed.statement) {
    return explain_colour({failed.reading, failed.failure, statement});
  }
  const auto tokens = find_tokens(failed.reading, *statement, failed.failure.message);
  if (!tokens) return std::nullopt;
  const Token& first = failed.statement->tokens[tokens->begin];
  if (tokens->size() > 1) {
    const Token& second = failed.statement->tokens[tokens->begin + 1];
    if (second.kind != TokenKind::word) {
      return Problem{
          place_of(*failed.statement, *tokens), failed.failure.message + " is no colour", {}};
    }
    return Problem{place_of(second), "a ',' is missing in front of " + failed.text(second), {}};
  }
  if (first.text == "COLORSTICK") {
    return Problem{place_of(first), "COLORSTICK works only as the first item",
                   "put it right behind the expression"};
  }
  const auto near = nearest(first.text, Vocabulary::colour);
  return Problem{place_of(first), failed.text(first) + " is no colour",
                 near ? "did you mean " + *near + "?"
                      : "write a colour word, or COLOR and 6 hexadecimal digits"};
}

/// An argument's bounds, below which a word stops the calculation.
struct Bound {
  std::string_view word;
  size_t index;
  std::string_view name;
  double least;
  bool is_strict;  ///< `least` itself is refused, and what lies below it is taken
};

constexpr Bound bounds[] = {
    {"SAR", 0, "period", 1, false},         {"SAR", 1, "step", 0, true},
    {"SAR", 2, "limit", 0, true},           {"SAR1", 0, "period", 1, false},
    {"SAR1", 1, "step", 0, true},           {"SAR1", 2, "limit", 0, true},
    {"SARSHOWTYPE", 0, "period", 1, false}, {"SARSHOWTYPE", 1, "step", 0, true},
    {"SARSHOWTYPE", 2, "limit", 0, true},   {"SAR1SHOWTYPE", 0, "period", 1, false},
    {"SAR1SHOWTYPE", 1, "step", 0, true},   {"SAR1SHOWTYPE", 2, "limit", 0, true},
    {"NORMPDF", 2, "deviation", 0, false}};

std::optional<Problem> check_bounds(const Reading& reading, const Statement& statement,
                                    const Call& call) {
  const std::string& word = statement.tokens[call.word].text;
  for (const Bound& bound : bounds) {
    if (bound.word != word || bound.index >= call.arguments.size()) continue;
    const Range argument = call.arguments[bound.index];
    if (argument.empty()) continue;
    const auto value = reading.constant_value(statement, argument);
    if (!value || *value > bound.least || (*value == bound.least && !bound.is_strict)) continue;
    return Problem{place_of(statement, argument),
                   "the " + std::string(bound.name) + " of " + word + " must be " +
                       (bound.is_strict ? "above " : "at least ") + number_text(bound.least) +
                       ", it is " + number_text(*value),
                   {}};
  }
  return std::nullopt;
}

std::optional<Problem> check_period(const Reading& reading, const Statement& statement,
                                    const Call& call) {
  const std::string& word = statement.tokens[call.word].text;
  const PeriodArgument* const period = find_period(word);
  if (period == nullptr || period->takes_negative || period->index >= call.arguments.size()) {
    return std::nullopt;
  }
  const Range argument = call.arguments[period->index];
  if (argument.empty()) return std::nullopt;
  const auto value = reading.constant_value(statement, argument);
  if (!value || *value > -1) return std::nullopt;
  return Problem{place_of(statement, argument),
                 "the period of " + word + " is negative: " + number_text(*value),
                 {}};
}

/// The calls that may have been given a negative period while the script ran.
std::optional<Problem> find_varying_period(const Reading& reading) {
  for (const Statement& statement : reading.statements) {
    for (const Call& call : statement.calls) {
      const PeriodArgument* const period = find_period(statement.tokens[call.word].text);
      if (period == nullptr || period->takes_negative || !period->needs_all_bars) continue;
      if (period->index >= call.arguments.size() || call.arguments[period->index].empty()) continue;
      const Range argument = call.arguments[period->index];
      if (reading.constant_value(statement, argument)) continue;
      return Problem{place_of(statement, argument),
                     "the period of " + statement.tokens[call.word].text + " was negative at a bar",
                     "keep it above 0, such as MAX(...,1)"};
    }
  }
  return std::nullopt;
}

std::optional<Problem> find_fatal(const Reading& reading) {
  for (const Statement& statement : reading.statements) {
    if (auto problem = find_fatal_argument(reading, statement)) return problem;
  }
  return std::nullopt;
}

/// ICON behind a comma without a text in single quotes.
std::optional<Problem> find_icon_without_text(const Case& failed) {
  for (const Statement& statement : failed.reading.statements) {
    for (const Call& call : statement.calls) {
      const Token& word = statement.tokens[call.word];
      if (word.text != "ICON") continue;
      const bool has_text = call.arguments.size() > 1 && !call.arguments[1].empty() &&
                            statement.tokens[call.arguments[1].begin].kind == TokenKind::text;
      if (!has_text) return unquoted({failed.reading, failed.failure, &statement}, word, 1);
    }
  }
  return std::nullopt;
}

/// ALIGNX, of which the library tells no more than that it is no number.
std::optional<Problem> find_item_without_number(const Reading& reading) {
  constexpr std::array<std::string_view, 2> placing = {"ALIGN", "VALIGN"};
  for (const Statement& statement : reading.statements) {
    for (const Range item : statement.items) {
      if (item.empty()) continue;
      const Token& token = statement.tokens[item.begin];
      for (const std::string_view front : placing) {
        if (!token.text.starts_with(front) || is_style(token.text)) continue;
        return Problem{place_of(token), reading.text(place_of(token)) + " has no number",
                       "write " + bounds_of_style(front)};
      }
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<Problem> find_fatal_argument(const Reading& reading, const Statement& statement) {
  for (const Call& call : statement.calls) {
    if (auto problem = check_bounds(reading, statement, call)) return problem;
    if (auto problem = check_period(reading, statement, call)) return problem;
  }
  return std::nullopt;
}

std::optional<Problem> explain_short_form(const Case& failed) {
  if (failed.failure.message.empty()) return explain_exception(failed);
  const Token* const word = short_word(failed);
  if (word == nullptr) return explain_suffix(failed);
  if (failed.failure.code == 3) {
    const auto* const row = std::ranges::find(short_forms, word->text, &ShortForm::word);
    const std::string lacks(row == std::end(short_forms) ? "what it belongs to" : row->lacks);
    return Problem{place_of(*word), word->text + " lacks " + lacks + " in front of a comma",
                   short_form_of(word->text)};
  }
  for (Problem& problem : check_form(failed.reading, *failed.statement)) {
    if (problem.sentence.ends_with("no partner")) return std::move(problem);
  }
  if (word->text == "CJLVOL") {
    return Problem{place_of(*word), "CJLVOL takes one digit", short_form_of("CJLVOL")};
  }
  if (word->text == "WORD") return unquoted(failed, *word, 1);
  if (word->text == "NOTICE") return explain_notice(failed, *word);
  if (is_trade_word(word->text)) return explain_trade_word(failed, *word);
  if (word->text == "SOUND") return unquoted(failed, *word, 0);
  if (word->text == "ICON") {
    return Problem{place_of_argument(*failed.statement, *word, 0),
                   "the place of ICON is 1, at the high, or 0, at the low", short_form_of("ICON")};
  }
  return explain_suffix(failed);
}

std::optional<Problem> explain_constant(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  if (failed.failure.code == 2002) return explain_quote_field(failed);
  if (failed.failure.code == 2003) return explain_sign(failed);
  if (failed.failure.code == 2013) return explain_colour(failed);
  const Token* const word = find_word(*failed.statement, "ZIG");
  if (word == nullptr) return std::nullopt;
  return Problem{place_of(*word), "ZIG can't be called", "write ZIGZAG(x,n,t)"};
}

std::optional<Problem> explain_exception(const Case& failed) {
  const std::string& message = failed.failure.message;
  std::optional<Problem> problem;
  if (message == "invalid string position") problem = find_icon_without_text(failed);
  if (auto item = find_item_without_number(failed.reading)) return item;
  if (!problem) problem = find_fatal(failed.reading);
  if (!problem && message == "vector too long") problem = find_varying_period(failed.reading);
  if (problem && !message.empty()) problem->sentence += " (\"" + message + "\")";
  return problem;
}

}  // namespace quor_advice
