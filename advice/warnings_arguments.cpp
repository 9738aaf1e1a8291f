// Arguments in the wrong order, prices in the place of conditions, numbers in the place of texts.
#include <algorithm>
#include <array>

#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

/// Words whose series stands in front of a plain number.
struct SeriesFirst {
  std::string_view word;
  size_t number;  ///< index of the number's argument
};
constexpr SeriesFirst series_first[] = {{"PEAK", 1},       {"PEAKBARS", 1},  {"TROUGH", 1},
                                        {"TROUGHBARS", 1}, {"ZIGZAG", 1},    {"ROUND", 1},
                                        {"AMA", 1},        {"WAVEPEAK1", 1}, {"WAVEVALLEY1", 1}};

// Conditions of these must be 1; other words take any number but 0, or any above 0.
constexpr std::array<std::string_view, 5> wants_one = {"BARSLAST", "BARSLASTCOUNT", "BARSSINCE",
                                                       "BARSSINCEN", "VALUEWHEN"};

bool takes_candle(std::string_view word) {
  return word == "DRAWKLINE" || word == "DRAWKLINE1" || word == "DRAWBARLINE";
}

bool is_condition_role(std::string_view role) { return role.starts_with("COND"); }

/// What a condition can have changed places with.
bool is_series_role(std::string_view role) {
  return role.starts_with("PRICE") || role == "X" || role == "N" || role == "NUMBER";
}

/// DRAWNUMBER for DRAWTEXT, with the arguments that are there.
std::string drawn_number(const Reading& reading, const Statement& statement, const Call& call) {
  const auto text = [&](size_t i) { return reading.text(statement, call.arguments[i]); };
  const std::string& word = statement.tokens[call.word].text;
  if (word == "DRAWTEXT") {
    return "write DRAWNUMBER(" + text(0) + "," + text(1) + "," + text(2) + ",2,COLORAUTO)";
  }
  if (word == "KTEXT") {
    return "write DRAWNUMBER(" + text(0) + "," + text(2) + "," + text(5) + ",2," + text(4) + ")";
  }
  return "write DRAWLASTBARNUMBER(" + text(0) + "," + text(1) + ",2,COLORAUTO)";
}

class ArgumentCheck {
 public:
  ArgumentCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), out_(out) {}

  void check(const Call& call) {
    if (call.close == absent || call.arguments.empty()) return;
    if (std::ranges::any_of(call.arguments, [](Range range) { return range.empty(); })) return;
    roles_ = arguments_of_form(word(call));
    if (word(call) == "NOT") roles_ = {"COND"};
    if (word(call) == "IFF" || word(call) == "IFN") take_branch_roles(call);
    check_numbers_as_text(call);
    if (check_exchanged(call)) return;
    for (size_t i = 0; i < std::min(roles_.size(), call.arguments.size()); ++i) {
      if (is_condition_role(roles_[i])) check_condition(call, call.arguments[i]);
    }
  }

  /// The condition of a short form, and operands of AND and OR.
  void check_statement() {
    if (statement_.form == Form::expression && !statement_.items.empty() && asks_condition())
      tell_price(statement_.expression, "");
    for (size_t i = statement_.expression.begin; i < statement_.tokens.size(); ++i) {
      const Token& token = statement_.tokens[i];
      const bool joins =
          token.is_sign("&&") || token.is_sign("||") || token.is_sign("&") || token.is_sign("|");
      if (!joins || i == 0) continue;
      check_joined(i, i - 1, i < 2 ? absent : i - 2);
      check_joined(i, i + 1, i + 2);
    }
  }

 private:
  /// A condition, its value, a condition, its value, and the last value.
  void take_branch_roles(const Call& call) {
    roles_.clear();
    for (size_t i = 0; i + 1 < call.arguments.size(); ++i) {
      roles_.emplace_back(i % 2 == 0 ? "COND" : "VALUE");
    }
  }

  const std::string& word(const Call& call) const { return statement_.tokens[call.word].text; }
  Gives gives(Range range) const { return what_gives(reading_, statement_, range); }
  std::string text(Range range) const { return reading_.text(statement_, range); }

  void add(Place place, std::string sentence, std::string suggestion) {
    out_.push_back({place, std::move(sentence), std::move(suggestion)});
  }

  Place place_of_call(const Call& call) const {
    return {statement_.tokens[call.word].begin, statement_.tokens[call.close].end};
  }

  bool asks_condition() const {
    const Range item = statement_.items[0];
    if (item.empty() || statement_.expression.empty()) return false;
    const std::string& first = statement_.tokens[item.begin].text;
    return first == "NOTICE" || first == "ICON" || first == "WORD" || first == "SOUND" ||
           is_trade_word(first);
  }

  /// A lone price on one side of AND or OR.
  void check_joined(size_t sign, size_t operand, size_t beyond) {
    const Token* const token = statement_.token(operand);
    if (token == nullptr || token->kind != TokenKind::word) return;
    const Token* const next = beyond == absent ? nullptr : statement_.token(beyond);
    const bool ends =
        next == nullptr || next->kind == TokenKind::comma || next->kind == TokenKind::colon ||
        next->is_sign("&&") || next->is_sign("||") ||
        (operand < sign ? next->kind == TokenKind::open : next->kind == TokenKind::close);
    if (ends) tell_price({operand, operand + 1}, "");
  }

  void tell_price(Range range, const std::string& more) {
    if (gives(range) != Gives::price) return;
    add(place_of(statement_, range),
        text(range) + " is a price, no condition: it holds on every bar" + more,
        "compare it, such as " + text(range) + ">REF(" + text(range) + ",1)");
  }

  void check_condition(const Call& call, Range range) {
    const Gives given = gives(range);
    if (given == Gives::price) tell_price(range, "");
    const bool is_one = std::ranges::find(wants_one, word(call)) != wants_one.end();
    if (!is_one) return;
    if (given == Gives::change) {
      add(place_of(statement_, range), text(range) + " is a number, no condition",
          "compare it, such as " + text(range) + ">0");
    }
    const auto value = reading_.constant_value(statement_, range);
    if (value && *value != 0.0 && *value != 1.0) {
      add(place_of(statement_, range), text(range) + " is a number, no condition",
          word(call) + " takes a condition, such as C>O");
    }
  }

  /// DRAWTEXT(C>O,L,C): the text is made before there are bars.
  void check_numbers_as_text(const Call& call) {
    const bool writes =
        word(call) == "DRAWTEXT" || word(call) == "DRAWLASTBARTEXT" || word(call) == "KTEXT";
    if (!writes || roles_.size() > call.arguments.size()) return;
    const Range argument = call.arguments[roles_.size() - 1];
    const Token* const lone = lone_token(statement_, argument);
    const bool is_mark = lone != nullptr && (lone->kind == TokenKind::text || is_style(lone->text));
    if (is_mark || reading_.constant_value(statement_, argument)) return;
    for (size_t i = call.open; i < argument.end; ++i) {
      if (statement_.tokens[i].kind == TokenKind::text) return;
    }
    add(place_of(statement_, argument),
        word(call) + " writes a text that is made before there are bars; " + text(argument) +
            " has no value then",
        drawn_number(reading_, statement_, call));
  }

  bool tell_exchanged(const Call& call, size_t first, size_t second, const std::string& why) {
    add(place_of_call(call), why,
        "write " + with_exchanged(reading_, statement_, call, first, second));
    return true;
  }

  bool check_exchanged(const Call& call) {
    return exchanged_condition(call) || exchanged_series(call) || exchanged_decimals(call) ||
           exchanged_bounds(call) || exchanged_weight(call) || check_candle(call) ||
           check_bars_from_to(call);
  }

  /// DRAWTEXT(L,C>O,'up'), COUNT(10,C>O).
  bool exchanged_condition(const Call& call) {
    const size_t count = std::min(roles_.size(), call.arguments.size());
    for (size_t i = 0; i < count; ++i) {
      if (!is_condition_role(roles_[i]) || !is_no_condition(call.arguments[i])) continue;
      for (size_t j = 0; j < count; ++j) {
        if (!is_series_role(roles_[j]) || gives(call.arguments[j]) != Gives::condition) continue;
        return tell_exchanged(
            call, i, j,
            "the condition of " + word(call) + " stands in the place of " + std::string(roles_[j]));
      }
    }
    return false;
  }

  bool is_no_condition(Range range) const {
    const Gives given = gives(range);
    if (given == Gives::price || given == Gives::change) return true;
    const auto value = reading_.constant_value(statement_, range);
    return value && *value != 0.0 && *value != 1.0;
  }

  /// PEAK(5,C,1,1), ROUND(2,C).
  bool exchanged_series(const Call& call) {
    const auto* const row = std::ranges::find(series_first, word(call), &SeriesFirst::word);
    if (row == std::end(series_first) || row->number >= call.arguments.size()) return false;
    const Gives series = gives(call.arguments[0]);
    const Gives number = gives(call.arguments[row->number]);
    if (series != Gives::constant) return false;
    if (number != Gives::price && number != Gives::change) return false;
    return tell_exchanged(call, 0, row->number,
                          "a number stands in the place of the series of " + word(call));
  }

  /// DRAWNUMBER(C>O,H,2,C,COLORRED).
  bool exchanged_decimals(const Call& call) {
    const auto role = std::ranges::find(roles_, "DECIMALS");
    if (role == roles_.end() || role == roles_.begin()) return false;
    const auto index = static_cast<size_t>(role - roles_.begin());
    if (index >= call.arguments.size()) return false;
    const Gives decimals = gives(call.arguments[index]);
    const bool is_price = decimals == Gives::price || decimals == Gives::change;
    if (!is_price || gives(call.arguments[index - 1]) != Gives::constant) return false;
    return tell_exchanged(call, index - 1, index,
                          "the number of " + word(call) + " stands in the place of its decimals");
  }

  /// BETWEEN(30,X,70) and BETWEEN(L,C,H).
  bool exchanged_bounds(const Call& call) {
    if ((word(call) != "BETWEEN" && word(call) != "RANGE") || call.arguments.size() != 3)
      return false;
    const Token* const low = lone_token(statement_, call.arguments[0]);
    const Token* const high = lone_token(statement_, call.arguments[2]);
    const bool is_bar = low != nullptr && high != nullptr &&
                        (low->text == "L" || low->text == "LOW") &&
                        (high->text == "H" || high->text == "HIGH");
    const bool is_band = gives(call.arguments[0]) == Gives::constant &&
                         gives(call.arguments[2]) == Gives::constant &&
                         gives(call.arguments[1]) != Gives::constant;
    if (!is_bar && !is_band) return false;
    return tell_exchanged(call, 0, 1,
                          word(call) + " takes first what is to lie between the other two");
  }

  /// SMA(C,1,3).
  bool exchanged_weight(const Call& call) {
    if (word(call) != "SMA" || call.arguments.size() != 3) return false;
    const auto period = reading_.constant_value(statement_, call.arguments[1]);
    const auto weight = reading_.constant_value(statement_, call.arguments[2]);
    if (!period || !weight || *weight <= *period || *period <= 0.0) return false;
    return tell_exchanged(call, 1, 2,
                          "the weight of SMA, " + number_text(*weight) + ", is above its period, " +
                              number_text(*period));
  }

  /// The four prices of a candle in another order.
  bool check_candle(const Call& call) {
    if (!takes_candle(word(call)) || call.arguments.size() != 4) return false;
    std::string order;
    for (const Range argument : call.arguments) {
      const Token* const token = lone_token(statement_, argument);
      const bool is_price = token != nullptr &&
                            (token->text == "HIGH" || token->text == "H" || token->text == "OPEN" ||
                             token->text == "O" || token->text == "LOW" || token->text == "L" ||
                             token->text == "CLOSE" || token->text == "C");
      if (!is_price) return false;
      order += token->text[0];
    }
    std::string sorted = order;
    std::ranges::sort(sorted);
    if (order == "HOLC" || sorted != "CHLO") return false;
    add(place_of_call(call), word(call) + " takes high, open, low and close in this order",
        "write " + word(call) + "(H,O,L,C)");
    return true;
  }

  /// LAST(C>O,1,3) looks at no bar.
  bool check_bars_from_to(const Call& call) {
    if (word(call) != "LAST" || call.arguments.size() != 3) return false;
    const auto far = reading_.constant_value(statement_, call.arguments[1]);
    const auto near = reading_.constant_value(statement_, call.arguments[2]);
    if (!far || !near || *far > *near) return false;
    add(place_of_call(call),
        "LAST looks at the bars from " + number_text(*near) + " to " + number_text(*far - 1) +
            " bars ago, which are none",
        "for those from " + number_text(*far) + " to " + number_text(*near) + " write LAST(" +
            text(call.arguments[0]) + "," + number_text(*near + 1) + "," + number_text(*far) + ")");
    return true;
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Problem>& out_;
  std::vector<std::string_view> roles_;
};

}  // namespace

void warn_of_arguments(const Reading& reading, const Statement& statement,
                       std::vector<Problem>& out) {
  ArgumentCheck check(reading, statement, out);
  for (const Call& call : statement.calls) check.check(call);
  check.check_statement();
}

}  // namespace quor_advice
