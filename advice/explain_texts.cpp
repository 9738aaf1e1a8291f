// Quotes, comments, the end of a statement, and references in double quotes.
#include <algorithm>
#include <iterator>

#include "explain.h"
#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

std::string_view inside(const Reading& reading, const Quoted& quoted) {
  const size_t end = quoted.end.value_or(reading.script.size());
  return reading.script.substr(quoted.begin + 1, end - quoted.begin - 1);
}

/// With an odd number of quotes the last one stays open, though an earlier one may be at fault: in
/// a comment, or where the text runs over a line end.
const Quoted* quote_at_fault(const Reading& reading) {
  const Quoted* open = nullptr;
  for (const Quoted& quoted : reading.scan.quoted) {
    if (!quoted.end) open = &quoted;
  }
  if (open == nullptr) return nullptr;
  for (const Quoted& quoted : reading.scan.quoted) {
    if (quoted.mark != open->mark) continue;
    if (quoted.in_comment && (quoted.hides_comment_end || !quoted.end)) return &quoted;
    if (!quoted.in_comment && inside(reading, quoted).find_first_of("\r\n") != absent)
      return &quoted;
  }
  return open;
}

std::string closing_quote_meant(std::string_view text) {
  const size_t line = std::min(text.find_first_of("\r\n"), text.size());
  for (const std::string_view curved : {"’", "‘", "”", "＇"}) {
    if (text.substr(0, line).find(curved) != absent) {
      return "write ' for the " + std::string(curved) + " that was to close it";
    }
  }
  return {};
}

/// Behind the last ";" nothing is left to end, but some marks count as unfinished text.
std::optional<Problem> explain_end_of_script(const Reading& reading) {
  constexpr std::string_view cure = "end the script with a line end";
  const size_t last = reading.scan.slots.empty() ? 0 : reading.scan.slots.back().end;
  if (!reading.scan.quoted.empty() && reading.scan.quoted.back().begin > last) {
    const size_t begin = reading.scan.quoted.back().begin;
    return Problem{{begin, begin + 1},
                   "a quote in a comment behind the last ';' counts as an unfinished statement",
                   "take it away, or " + std::string(cure)};
  }
  for (const Comment& comment : reading.scan.comments) {
    if (comment.begin < last || reading.script[comment.begin] != '/') continue;
    return Problem{{comment.begin, comment.begin + 2},
                   "a comment of this form behind the last ';' counts as an unfinished statement",
                   "write { } around it, or " + std::string(cure)};
  }
  const size_t tab = reading.script.find('\t', last);
  if (tab == absent) return std::nullopt;
  return Problem{{tab, tab + 1},
                 "a tab behind the last ';' counts as an unfinished statement",
                 "take it away, or " + std::string(cure)};
}

/// IF(C>O) { ... }, where the braces hold a comment.
std::optional<Problem> explain_choice_of_statements(const Reading& reading,
                                                    const Statement& statement) {
  if (statement.calls.empty() || statement.calls[0].word != 0 || reading.scan.comments.empty())
    return std::nullopt;
  const Token& word = statement.tokens[0];
  const bool ends_in_comment = reading.scan.comments.back().begin > statement.tokens.back().begin;
  if (word.text != "IF" || statement.calls[0].arguments.size() != 1 || !ends_in_comment)
    return std::nullopt;
  return Problem{place_of(word), "IF chooses a value, not statements; braces hold a comment",
                 "write IF(COND,A,B), such as X:=IF(C>O,C,O);"};
}

std::optional<Problem> explain_half_statement(const Reading& reading) {
  const size_t begin = *reading.scan.half_line_comment;
  const auto& tokens = reading.statements.back().tokens;
  if (!tokens.empty() && reading.line_of(tokens.back().end) < reading.line_of(begin)) {
    return missing_end(reading, tokens.back());
  }
  return Problem{{begin, begin + 2},
                 "'//' stands behind half a statement",
                 "end the statement with ';' first, or write { } around the comment"};
}

struct ReferenceWords {
  int64_t code;
  std::string_view sentence;
  std::string_view suggestion;
};

constexpr ReferenceWords reference_words[] = {
    {9, "a reference in double quotes must stand right behind ':' or '='",
     "give it a line of its own"},
    {10, "a reference in double quotes lacks its '$'", "write \"CODE$FIELD\""},
    {11, "a reference in double quotes lacks its code", "write \"CODE$FIELD\""},
    {2007, "unknown unit of a period", "units are MIN, HOUR, DAY, WEEK and MONTH"},
    {2008, "the unit doesn't have this multiple",
     "MIN has 1, 3, 5, 10, 15 and 30, HOUR 1 to 4, the others 1"},
    {2009, "the period isn't longer than that of the bars", "name a longer one"},
    {2010, "unknown field of a reference", "write a bar field, such as CLOSE"},
};

std::string field_suggestion(std::string_view reference, std::string_view otherwise) {
  const size_t mark = reference.rfind('$');
  const std::string field = to_upper(reference.substr(mark == absent ? 0 : mark + 1));
  const auto near = nearest(field, Vocabulary::expression);
  if (field == "VOLUME") return "did you mean VOL?";
  return near && is_field(*near) ? "did you mean " + *near + "?" : std::string(otherwise);
}

std::optional<Problem> double_quote_in_text(const Statement& statement) {
  for (const Token& token : statement.tokens) {
    const size_t mark = token.kind == TokenKind::text ? token.text.find('"') : absent;
    if (mark == absent) continue;
    return Problem{{token.begin + mark, token.begin + mark + 1},
                   "a double quote inside a text opens a reference",
                   "take it away"};
  }
  return std::nullopt;
}

}  // namespace

std::optional<Problem> explain_open_quote(const Case& failed) {
  const Quoted* const quoted = quote_at_fault(failed.reading);
  if (quoted == nullptr) return std::nullopt;
  const Place place{quoted->begin, quoted->begin + 1};
  if (quoted->in_comment) {
    return Problem{place, "a quote in a comment opens a text that swallows what follows",
                   "take the apostrophe away"};
  }
  std::string suggestion = closing_quote_meant(inside(failed.reading, *quoted));
  if (suggestion.empty()) suggestion = std::string("close it with ") + quoted->mark;
  return Problem{place, "this quote is left open", std::move(suggestion)};
}

std::optional<Problem> explain_unfinished(const Case& failed) {
  const Reading& reading = failed.reading;
  if (reading.scan.half_line_comment) return explain_half_statement(reading);
  if (reading.statements.empty()) return std::nullopt;
  const Statement& last = reading.statements.back();
  if (!reading.scan.is_unfinished || last.tokens.empty()) return explain_end_of_script(reading);
  if (reading.scan.open_comment) {
    return Problem{{*reading.scan.open_comment, *reading.scan.open_comment + 1},
                   "the comment that opens here is never closed",
                   "close it"};
  }
  const auto problems = check_form(reading, last);
  for (const Problem& problem : problems) {
    if (problem.sentence.starts_with("a ';'")) return problem;
  }
  if (auto problem = explain_choice_of_statements(reading, last)) return problem;
  const size_t end = last.tokens.back().end;
  return Problem{{end, end + 1}, "the last statement has no ';' at its end", "write ';' here"};
}

std::optional<Problem> explain_reference(const Case& failed) {
  if (failed.statement == nullptr) return std::nullopt;
  const auto token =
      std::ranges::find(failed.statement->tokens, TokenKind::reference, &Token::kind);
  if (token == failed.statement->tokens.end()) return double_quote_in_text(*failed.statement);
  const auto second = std::ranges::find(std::next(token), failed.statement->tokens.end(),
                                        TokenKind::reference, &Token::kind);
  if (second != failed.statement->tokens.end()) {
    return Problem{place_of(*second), "a second reference in double quotes in one statement",
                   "give each a line of its own and calculate with the names"};
  }
  const auto* const row =
      std::ranges::find(reference_words, failed.failure.code, &ReferenceWords::code);
  const std::string inner =
      token->text.size() > 2 ? token->text.substr(1, token->text.size() - 2) : std::string();
  if (inner.find('$') == absent) {
    return Problem{place_of(*token),
                   "double quotes are kept for references to other data, such as \"600000$CLOSE\"",
                   "write '" + inner + "' for a text"};
  }
  std::string suggestion(row->suggestion);
  if (row->code == 2010) suggestion = field_suggestion(inner, suggestion);
  return Problem{place_of(*token), std::string(row->sentence), std::move(suggestion)};
}

}  // namespace quor_advice
