// Data of other securities and periods that isn't what it looks like.
#include <algorithm>
#include <array>

#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

constexpr std::array<std::string_view, 5> units = {"MIN", "HOUR", "DAY", "WEEK", "MONTH"};

std::string_view inside(const Token& token) {
  const std::string_view text = token.text;
  return text.size() < 2 ? std::string_view() : text.substr(1, text.size() - 2);
}

bool is_unit(std::string_view text) {
  return std::ranges::find(units, to_upper(text)) != units.end();
}

/// "DAY$1$CLOSE"
bool names_period(const Token& token) {
  if (token.kind != TokenKind::reference) return false;
  const std::string_view text = inside(token);
  return std::ranges::count(text, '$') == 2 && is_unit(text.substr(0, text.find('$')));
}

/// "DAY$CLOSE" is the close of a security DAY.
void warn_of_unit_as_code(const Statement& statement, std::vector<Problem>& out) {
  for (const Token& token : statement.tokens) {
    if (token.kind != TokenKind::reference) continue;
    const std::string_view text = inside(token);
    const std::string_view code = text.substr(0, text.find('$'));
    if (std::ranges::count(text, '$') != 1 || !is_unit(code)) continue;
    const std::string unit = to_upper(code);
    out.push_back({place_of(token), "this reads a security whose code is " + unit,
                   "a longer period is written \"" + unit + "$1$" +
                       std::string(text.substr(code.size() + 1)) + "\""});
  }
}

/// The line of a name that holds data of a longer period and nothing else.
bool is_longer_period(const Reading& reading, const Token& name, size_t user) {
  const auto line = reading.lines.find(name.text);
  if (line == reading.lines.end() || line->second >= user) return false;
  const Statement& statement = reading.statements[line->second];
  const Token* const lone = lone_token(statement, statement.expression);
  return lone != nullptr && names_period(*lone);
}

/// MA(D,5) of D:="DAY$1$CLOSE" at five-minute bars averages five bars of one day.
void warn_of_window_over_reference(const Reading& reading, const Statement& statement,
                                   std::vector<Problem>& out) {
  for (const Call& call : statement.calls) {
    const std::string& word = statement.tokens[call.word].text;
    const PeriodArgument* const period = find_period(word);
    const bool looks_back = period != nullptr && !period->takes_negative && word != "FILTER" &&
                            word != "COUNT" && word != "BARSSINCEN";
    if (!looks_back || call.close == absent || period->index >= call.arguments.size()) continue;
    const Token* const series = lone_token(statement, call.arguments[0]);
    if (series == nullptr || !is_longer_period(reading, *series, statement.number)) continue;
    if (!reading.constant_value(statement, call.arguments[period->index])) continue;
    out.push_back(
        {{statement.tokens[call.word].begin, statement.tokens[call.close].end},
         word + " counts the bars of the chart, at which " + series->text +
             " stays the same over its longer period",
         "step back by whole periods: the guide's page of tasks shows an average of days"});
  }
}

}  // namespace

void warn_of_references(const Reading& reading, const Statement& statement,
                        std::vector<Problem>& out) {
  warn_of_unit_as_code(statement, out);
  warn_of_window_over_reference(reading, statement, out);
}

}  // namespace quor_advice
