#include "warnings.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "explain.h"
#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

using Problems = std::vector<Problem>;

bool opens_with(const Statement& statement, std::string_view word) {
  return !statement.tokens.empty() && statement.tokens[0].is(TokenKind::word, word);
}

/// Statements that draw a line of a generated name.
bool draws_unnamed(const Statement& statement) {
  if (statement.calls.empty() || statement.calls[0].word != 0) return false;
  const std::string& word = statement.tokens[0].text;
  return is_branch(word) || word == "HHV" || word == "LLV";
}

bool has_effect(const Statement& statement) {
  if (draws_unnamed(statement) || opens_with(statement, "CJLVOL")) return true;
  const auto effective = [](const Token& token) {
    return token.kind == TokenKind::word &&
           (acts(token.text) || token.text == "SET" || is_short_form(token.text));
  };
  return std::ranges::any_of(statement.tokens, effective);
}

void warn_of_no_effect(const Reading& reading, const Statement& statement, Problems& out) {
  if (statement.form != Form::expression || has_effect(statement)) return;
  const auto& tokens = statement.tokens;
  const bool is_equation =
      tokens.size() > 2 && tokens[0].kind == TokenKind::word && tokens[1].is_sign("=");
  const std::string name = reading.text(place_of(tokens[0]));
  out.push_back({place_of(statement, {0, tokens.size()}), "this statement has no effect",
                 is_equation
                     ? "'=' compares; to declare " + name + " write " + name + ":= or " + name + ":"
                     : "write a name and ':=' in front to keep its value, or ':' to draw it"});
}

void warn_of_empty_expression(const Reading& /*reading*/, const Statement& statement,
                              Problems& out) {
  if (!statement.is_named()) return;
  const Token& colon = statement.tokens[statement.colon];
  if (statement.name_range.empty()) {
    out.push_back({place_of(colon), "no name stands in front of " + ("'" + colon.text + "'"), {}});
  }
  if (!statement.expression.empty()) return;
  out.push_back({place_of(colon), "nothing stands behind " + ("'" + colon.text + "'"), {}});
}

void warn_of_constant(const Reading& reading, const Statement& statement, Problems& out) {
  if (statement.form != Form::constant || statement.colon == absent) return;
  const Range value{statement.colon + 1, statement.tokens.size()};
  const std::string name = statement.name;
  if (statement.tokens[statement.colon].text == ":=") {
    out.push_back({place_of(statement.tokens[statement.colon]),
                   "a constant takes ':', with ':=' " + name + " is 0",
                   "write CONST " + name + ":" + reading.text(statement, value) + ";"});
    return;
  }
  std::string text;
  for (size_t i = value.begin; i < value.end; ++i) text += statement.tokens[i].text;
  if (to_number(text)) return;
  const auto constant = reading.constants.find(name);
  const double taken = constant == reading.constants.end() ? 0.0 : constant->second;
  const Place place =
      value.empty() ? place_of(statement.tokens[statement.colon]) : place_of(statement, value);
  out.push_back(
      {place, "a constant is a plain number, of this one " + number_text(taken) + " is taken", {}});
}

bool is_read_elsewhere(const Reading& reading, const Statement& declaration) {
  return std::ranges::any_of(reading.statements, [&declaration](const Statement& statement) {
    return statement.form != Form::constant && statement.number != declaration.number &&
           find_word(statement, declaration.name) != nullptr;
  });
}

/// Constants beat lines and fields wherever they are read.
void warn_of_hidden_name(const Reading& reading, const Statement& statement, Problems& out) {
  if (statement.name_range.empty()) return;
  const Place place = place_of(statement, statement.name_range);
  const std::string shown = reading.text(place);
  if (statement.form == Form::constant) {
    if (is_bare_word(statement.name)) {
      out.push_back({place, "the language's own word " + shown + " stands, not this constant",
                     "take another name"});
    } else if (is_field(statement.name)) {
      out.push_back({place, "this hides the bar field " + shown, "take another name"});
    }
  } else if (reading.constants.contains(statement.name) && is_read_elsewhere(reading, statement)) {
    out.push_back({place,
                   shown + " is a constant or parameter, too, which is what expressions read",
                   "take another name"});
  }
}

/// Comparisons have ranks of their own, so that two in a row seldom mean what they look like.
void warn_of_comparisons(const Reading& /*reading*/, const Statement& statement, Problems& out) {
  std::vector<size_t> counts = {0};
  for (size_t i = statement.expression.begin; i < statement.expression.end; ++i) {
    const Token& token = statement.tokens[i];
    if (token.kind == TokenKind::open) counts.push_back(0);
    if (token.kind == TokenKind::close && counts.size() > 1) counts.pop_back();
    const bool joins =
        token.is_sign("&&") || token.is_sign("||") || token.is_sign("&") || token.is_sign("|");
    if (joins || token.kind == TokenKind::comma) counts.back() = 0;
    if (!is_comparison(token) || ++counts.back() != 2) continue;
    out.push_back({place_of(token),
                   "two comparisons in a row: one of them compares with the truth of the other",
                   "write parentheses, or join them with AND"});
  }
}

void warn_of_form(const Reading& reading, const Statement& statement, Problems& out) {
  for (Problem& problem : check_form(reading, statement)) out.push_back(std::move(problem));
}

void warn_of_fatal_argument(const Reading& reading, const Statement& statement, Problems& out) {
  if (auto problem = find_fatal_argument(reading, statement)) out.push_back(std::move(*problem));
}

/// Whether a statement reads one of the words or a reference, itself or through the lines that it
/// reads.
bool reads(const Reading& reading, const Statement& start,
           const std::set<std::string, std::less<>>& words) {
  std::set<size_t> seen = {start.number};
  std::vector<size_t> open = {start.number};
  while (!open.empty()) {
    const Statement& statement = reading.statements[open.back()];
    open.pop_back();
    for (const Token& token : statement.tokens) {
      if (token.kind == TokenKind::reference || words.contains(token.text)) return true;
      const auto line = reading.lines.find(token.text);
      if (line != reading.lines.end() && seen.insert(line->second).second)
        open.push_back(line->second);
    }
  }
  return false;
}

bool is_null_word(const Statement& statement) {
  if (statement.expression.size() != 1) return false;
  const std::string& word = statement.tokens[statement.expression.begin].text;
  return word == "NULL" || word == "DRAWNULL";
}

/// A comment that runs over statements into the next comment.
std::optional<Problem> swallowed_code(const Reading& reading, const Comment& comment) {
  const std::string_view text = reading.script.substr(comment.begin, comment.end - comment.begin);
  const std::string_view mark = text.substr(0, text.starts_with('{') ? 1 : 2);
  const size_t inner = text.find(mark, mark.size());
  const std::string_view before = text.substr(0, inner);
  if (inner == absent || before.find(';') == absent || before.find_first_of("\r\n") == absent) {
    return std::nullopt;
  }
  return Problem{{comment.begin, comment.begin + mark.size()},
                 "this comment runs on over the one that opens in line " +
                     std::to_string(reading.line_of(comment.begin + inner)),
                 "comments don't nest; close it"};
}

using Rule = void (*)(const Reading& reading, const Statement& statement, Problems& out);

// Of several warnings of one place the first one stays.
constexpr Rule rules[] = {
    warn_of_foreign_forms,    warn_of_form,        warn_of_items,          warn_of_no_effect,
    warn_of_constant,         warn_of_comparisons, warn_of_fatal_argument, warn_of_empty_expression,
    warn_of_hidden_name,      warn_of_names,       warn_of_references,     warn_of_words,
    warn_of_comparison_values};

// They come behind the rules of calls.
constexpr Rule late_rules[] = {warn_of_arguments, warn_of_limits, warn_of_branches, warn_of_styles};

}  // namespace

std::vector<Problem> script_warnings(const Reading& reading) {
  Problems out;
  for (const Quoted& quoted : reading.scan.quoted) {
    const Place place{quoted.begin, quoted.begin + 1};
    if (quoted.hides_comment_end) {
      out.push_back({place, "a quote in a comment opens a text that swallows what follows",
                     "take the apostrophe away"});
    } else if (!quoted.in_comment && quoted.end &&
               reading.script.substr(quoted.begin, *quoted.end - quoted.begin)
                       .find_first_of("\r\n") != absent) {
      out.push_back({place, "this text runs over the end of its line",
                     std::string("close it with ") + quoted.mark});
    }
  }
  for (const Comment& comment : reading.scan.comments) {
    if (!out.empty()) break;  // a quote that hides the end of a comment says enough
    if (auto problem = swallowed_code(reading, comment)) out.push_back(std::move(*problem));
  }
  for (const size_t end : reading.scan.stray_ends) {
    const size_t size = reading.script[end] == '}' ? 1 : 2;
    out.push_back({{end, end + size}, "this closes no comment", "take it away"});
  }
  const bool is_empty = std::ranges::all_of(
      reading.statements, [](const Statement& s) { return s.form == Form::empty; });
  if (reading.scan.open_comment) {
    const size_t begin = *reading.scan.open_comment;
    out.push_back(
        {{begin, begin + 1},
         "the comment that opens here is never closed and swallows the rest of the script",
         "close it"});
  } else if (is_empty) {
    out.push_back({{0, 0}, "the script has no statement", {}});
  }
  return out;
}

std::vector<Problem> statement_warnings(const Reading& reading, const Statement& statement,
                                        const RunFacts* run) {
  Problems out;
  if (statement.form == Form::empty) return out;
  for (const Rule rule : rules) rule(reading, statement, out);
  warn_of_calls(reading, statement, run, out);
  for (const Rule rule : late_rules) rule(reading, statement, out);
  return out;
}

std::vector<Problem> run_warnings(const Reading& reading, const Input& input) {
  const RunFacts& run = *input.run;
  std::set<std::string, std::less<>> without_data = {"GETPRICE", "GETSTOCKPRICE"};
  for (const std::string_view constant : missing_constants(input)) without_data.emplace(constant);
  for (const uint32_t id : run.missing_fields) {
    for (const std::string_view word : words_of_field(id)) without_data.emplace(word);
  }
  Problems out;
  for (const std::string& name : run.null_lines) {
    const auto line = reading.lines.find(name);
    if (line == reading.lines.end()) continue;
    const Statement& statement = reading.statements[line->second];
    if (is_null_word(statement) || reads(reading, statement, without_data)) continue;
    const Place place = place_of(statement, statement.name_range);
    out.push_back({place, reading.text(place) + " is null on every bar", {}});
  }
  return out;
}

bool contradicts_period(const RunFacts& run, int32_t period) {
  constexpr int64_t day = 1000000;
  if (period < one_day) return false;
  std::vector<int64_t> days;
  for (const int64_t key : run.keys) days.push_back(key / day);
  std::ranges::sort(days);
  return std::ranges::adjacent_find(days) != days.end();
}

}  // namespace quor_advice
