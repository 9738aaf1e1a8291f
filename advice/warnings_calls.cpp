// Calls that compile but can't do what they look like.
#include <algorithm>

#include "explain.h"
#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"
#include "word_help.h"

namespace quor_advice {
namespace {

/// The call in which each token stands, by index; `absent` outside of calls and parentheses.
std::vector<size_t> enclosing_parentheses(const Statement& statement) {
  std::vector<size_t> enclosing;
  std::vector<size_t> open;
  for (size_t i = 0; i < statement.tokens.size(); ++i) {
    if (statement.tokens[i].kind == TokenKind::close && !open.empty()) open.pop_back();
    enclosing.push_back(open.empty() ? absent : open.back());
    if (statement.tokens[i].kind == TokenKind::open) open.push_back(i);
  }
  return enclosing;
}

class CallCheck {
 public:
  CallCheck(const Reading& reading, const Statement& statement, const RunFacts* run,
            std::vector<Problem>& out)
      : reading_(reading),
        statement_(statement),
        run_(run),
        out_(out),
        enclosing_(enclosing_parentheses(statement)) {}

  void check(const Call& call) {
    if (call.close == absent) return;
    if (acts(word(call).text)) check_drawing(call);
    if (is_branch(word(call).text)) check_branch(call);
    check_period(call);
    if (call.word >= statement_.expression.end) return;
    if (auto problem = find_misplaced_text(statement_, call)) out_.push_back(std::move(*problem));
  }

 private:
  const Token& word(const Call& call) const { return statement_.tokens[call.word]; }

  void add(Place place, std::string sentence, std::string suggestion = {}) {
    out_.push_back({place, std::move(sentence), std::move(suggestion)});
  }

  void check_drawing(const Call& call) {
    const Token* const next = statement_.token(call.close + 1);
    const bool is_operand =
        (call.word > 0 && statement_.tokens[call.word - 1].kind == TokenKind::sign) ||
        (next != nullptr && next->kind == TokenKind::sign);
    if (!is_operand && enclosing_[call.word] == absent) return;
    add(place_of(word(call)), word(call).text + " gives no number to calculate with",
        "give it a statement of its own");
  }

  void check_branch(const Call& call) {
    const size_t given = call.arguments.size();
    const bool fits = word(call).text == "IFN" ? given >= 3 : given == 3;
    if (fits) return;
    add(place_of(word(call)),
        word(call).text + " takes 3 arguments: " + word(call).text + "(COND,A,B), and has " +
            std::to_string(given) + " here",
        given > 3 ? "write IFF for several conditions" : "");
  }

  void check_period(const Call& call) {
    const PeriodArgument* const period = find_period(word(call).text);
    if (period == nullptr || period->index >= call.arguments.size()) return;
    const Range argument = call.arguments[period->index];
    if (argument.empty()) return;
    const auto value = reading_.constant_value(statement_, argument);
    if (!value) {
      check_swapped(call, argument);
    } else if (run_ != nullptr && !run_->keys.empty() &&
               *value > static_cast<double>(run_->keys.size())) {
      const size_t bars = run_->keys.size();
      const std::string there =
          bars == 1 ? "there is only one bar" : "there are only " + std::to_string(bars) + " bars";
      add(place_of(statement_, argument),
          "the period of " + word(call).text + " is " + number_text(*value) + ", " + there);
    }
  }

  /// MA(5,C) for MA(C,5). SUM and COUNT of a constant count bars.
  void check_swapped(const Call& call, Range period) {
    const Range series = call.arguments[0];
    if (period.size() != 1) return;
    const Token& name = statement_.tokens[period.begin];
    const bool counts = word(call).text == "SUM" || word(call).text == "COUNT";
    if (name.kind != TokenKind::word ||
        (!is_field(name.text) && (counts || is_bare_word(name.text))))
      return;
    if (series.empty() || !reading_.constant_value(statement_, series)) {
      if (is_field(name.text))
        add(place_of(name), "the period of " + word(call).text + " is a bar field");
      return;
    }
    add({word(call).begin, statement_.tokens[call.close].end},
        "the period of " + word(call).text + " stands in the place of the series",
        "write " +
            with_exchanged(reading_, statement_, call, 0, find_period(word(call).text)->index));
  }

  const Reading& reading_;
  const Statement& statement_;
  const RunFacts* run_;
  std::vector<Problem>& out_;
  std::vector<size_t> enclosing_;
};

}  // namespace

std::optional<Problem> find_misplaced_text(const Statement& statement, const Call& call) {
  const std::string& word = statement.tokens[call.word].text;
  const auto names = arguments_of_form(word);
  const bool takes_sign = word.ends_with("ICON");
  for (size_t i = 0; i < std::min(call.arguments.size(), names.size()); ++i) {
    const Range argument = call.arguments[i];
    if (argument.size() != 1 || statement.tokens[argument.begin].kind != TokenKind::text) continue;
    if (names[i].starts_with('\'') || (takes_sign && i > 0)) continue;
    return Problem{place_of(statement, argument),
                   "a text stands in the place of " + std::string(names[i]),
                   "write " + std::string(find_word_help(word)->form)};
  }
  return std::nullopt;
}

void warn_of_calls(const Reading& reading, const Statement& statement, const RunFacts* run,
                   std::vector<Problem>& out) {
  CallCheck check(reading, statement, run, out);
  for (const Call& call : statement.calls) check.check(call);
}

}  // namespace quor_advice
