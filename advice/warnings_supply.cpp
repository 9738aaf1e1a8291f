// What a script asks its host for in vain. The library doesn't tell: the words then give another
// day, or null.
#include <algorithm>
#include <set>

#include "failure.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

/// Whether a statement may read words of the language. A constant or parameter of such a name
/// changes nothing: the language's own word stands.
bool reads_words(const Statement& statement) { return statement.form != Form::constant; }

/// "DATE", "DATE and DAY", "DATE, DAY and YEAR".
std::string list(const std::vector<std::string>& words) {
  std::string text = words.front();
  for (size_t i = 1; i < words.size(); ++i) {
    text += (i + 1 == words.size() ? " and " : ", ") + words[i];
  }
  return text;
}

/// One warning for the script, at the first word; bars of a day or longer need no calendar.
void warn_of_calendar(const Reading& reading, const Input& input, std::vector<Problem>& out) {
  const bool is_intraday = input.period != 0 && input.period < one_day;
  if (!is_intraday || input.supply->has_calendar) return;
  if (!is_flag_set(input.report, "IsNeedRequestTradeDay")) return;
  std::vector<std::string> words;
  Place place;
  for (const Statement& statement : reading.statements) {
    if (!reads_words(statement)) continue;
    for (const Token& token : statement.tokens) {
      if (token.kind != TokenKind::word || !reads_trading_day(token.text)) continue;
      if (words.empty()) place = place_of(token);
      if (std::ranges::find(words, token.text) == words.end()) words.push_back(token.text);
    }
  }
  if (words.empty()) return;
  out.push_back({place,
                 "there is no trading calendar, so " + list(words) +
                     (words.size() == 1 ? " gives" : " give") +
                     " each bar the date on its clock, not its trading day",
                 input.supply->calendar_advice});
}

/// One warning for each, at its first place.
void warn_of_constants(const Reading& reading, const Input& input, std::vector<Problem>& out) {
  if (!is_flag_set(input.report, "IsNeedRequestExtraData")) return;
  const auto missing = missing_constants(input);
  std::set<std::string, std::less<>> told;
  for (const Statement& statement : reading.statements) {
    if (!reads_words(statement)) continue;
    for (const Token& token : statement.tokens) {
      const bool is_missing =
          token.kind == TokenKind::word && std::ranges::find(missing, token.text) != missing.end();
      if (!is_missing) continue;
      if (!told.insert(token.text).second) continue;
      out.push_back({place_of(token),
                     "there is no number for " + token.text + ", so it is null on every bar",
                     input.supply->constant_advice});
    }
  }
}

}  // namespace

std::vector<std::string_view> missing_constants(const Input& input) {
  if (!input.supply) return {};
  auto missing = market_constants();
  std::erase_if(missing, [&input](std::string_view constant) {
    const auto& given = input.supply->constants;
    return std::ranges::find(given, constant) != given.end();
  });
  return missing;
}

std::vector<Problem> supply_warnings(const Reading& reading, const Input& input) {
  std::vector<Problem> out;
  if (!input.supply) return out;
  warn_of_calendar(reading, input, out);
  warn_of_constants(reading, input, out);
  return out;
}

}  // namespace quor_advice
