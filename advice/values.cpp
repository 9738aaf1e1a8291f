#include "values.h"

#include <algorithm>
#include <array>
#include <span>

#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

constexpr int deepest = 20;  ///< lines, calls and parentheses that are followed

constexpr std::array<std::string_view, 10> price_words = {
    "OPEN", "O", "HIGH", "H", "LOW", "L", "CLOSE", "C", "AVPRICE", "SETTLE"};

constexpr std::array<std::string_view, 25> condition_words = {
    "CROSS",    "CROSSUP",  "CROSSDOWN",  "EXIST",      "EVERY",      "NDAY",      "UPNDAY",
    "DOWNNDAY", "LAST",     "FILTER",     "BACKSET",    "BETWEEN",    "RANGE",     "NOT",
    "ISNULL",   "WAVEPEAK", "WAVEVALLEY", "CODELIKE",   "DIVERGENCE", "ISLASTBAR", "ISUP",
    "ISDOWN",   "ISEQUAL",  "WAVEPEAK1",  "WAVEVALLEY1"};

// What gives a price of prices; the first argument tells.
constexpr std::array<std::string_view, 27> of_first = {
    "MA",   "EMA",  "EXPMA", "EMAWH", "SMA",  "MEMA", "EXPMEMA", "AMA",        "DMA",
    "WMA",  "EMA2", "SMMA",  "TRMA",  "HHV",  "LLV",  "HV",      "LV",         "REF",
    "REFX", "GET",  "MAX",   "MIN",   "MAX1", "MIN1", "MV",      "PERCENTILE", "REFX1"};

constexpr std::array<std::string_view, 3> steady_words = {"PERIOD", "BARINTERVAL", "BARTYPE"};

class Judge {
 public:
  Judge(const Reading& reading, const Statement& statement, int depth)
      : reading_(reading), statement_(statement), depth_(depth) {}

  Gives judge(Range range) const {
    if (range.empty() || depth_ > deepest) return Gives::unknown;
    if (reading_.constant_value(statement_, range)) return Gives::constant;
    if (has_comparison(range)) return Gives::condition;
    return arithmetic(range);
  }

 private:
  /// Calls `take` with each token outside of parentheses.
  template <typename Take>
  void walk(Range range, Take take) const {
    for (size_t i = range.begin; i < range.end; ++i) {
      take(i);
      const bool opens = statement_.tokens[i].kind == TokenKind::open;
      if (opens && statement_.partners[i] != absent) i = statement_.partners[i];
    }
  }

  bool has_comparison(Range range) const {
    bool found = false;
    walk(range, [&](size_t i) {
      const Token& token = statement_.tokens[i];
      found |= is_comparison(token) || token.is_sign("&&") || token.is_sign("||") ||
               token.is_sign("&") || token.is_sign("|");
    });
    return found;
  }

  /// Prices and constants stay a price under + * and /; a minus makes a change of them.
  Gives arithmetic(Range range) const {
    bool has_price = false;
    bool has_minus = false;
    bool is_known = true;
    size_t operands = 0;
    Gives only = Gives::unknown;
    for (size_t i = range.begin; i < range.end; ++i) {
      const Token& token = statement_.tokens[i];
      if (token.kind == TokenKind::sign) {
        has_minus |= token.text == "-";
        is_known &=
            token.text == "-" || token.text == "+" || token.text == "*" || token.text == "/";
        continue;
      }
      only = operand(i);
      ++operands;
      has_price |= only == Gives::price || only == Gives::change;
      has_minus |= only == Gives::change;
      is_known &= only == Gives::price || only == Gives::constant || only == Gives::change;
      i = end_of_operand(i) - 1;
    }
    if (operands == 1 && range.size() == end_of_operand(range.begin) - range.begin) return only;
    if (!is_known || !has_price) return Gives::unknown;
    return has_minus ? Gives::change : Gives::price;
  }

  size_t end_of_operand(size_t index) const {
    const bool is_word = statement_.tokens[index].kind == TokenKind::word;
    const size_t open = is_word ? index + 1 : index;
    const Token* const token = statement_.token(open);
    const bool opens = token != nullptr && token->kind == TokenKind::open;
    if (!opens) return index + 1;
    return statement_.partners[open] == absent ? statement_.tokens.size()
                                               : statement_.partners[open] + 1;
  }

  Gives operand(size_t index) const {
    const Token& token = statement_.tokens[index];
    const size_t end = end_of_operand(index);
    const Judge inner(reading_, statement_, depth_ + 1);
    if (token.kind == TokenKind::open) return inner.judge({index + 1, end - 1});
    if (token.kind == TokenKind::number) return Gives::constant;
    if (token.kind != TokenKind::word) return Gives::unknown;
    if (reading_.constants.contains(token.text)) return Gives::constant;
    if (const auto line = reading_.lines.find(token.text); line != reading_.lines.end())
      return of_line(line->second);
    if (contains(condition_words, token.text)) return Gives::condition;
    if (end == index + 1) return contains(price_words, token.text) ? Gives::price : Gives::unknown;
    return of_call(index, inner);
  }

  Gives of_line(size_t number) const {
    if (number >= statement_.number || depth_ >= deepest) return Gives::unknown;
    if (reading_.stand_ins.contains(number)) return Gives::unknown;
    const Statement& line = reading_.statements[number];
    return Judge(reading_, line, depth_ + 1).judge(line.expression);
  }

  Gives of_call(size_t word, const Judge& inner) const {
    const Call* const call = call_at(statement_, word);
    const std::string& text = statement_.tokens[word].text;
    if (call == nullptr || call->arguments.empty() || !contains(of_first, text))
      return Gives::unknown;
    const Gives first = inner.judge(call->arguments[0]);
    if (first == Gives::price || first == Gives::change) return first;
    const bool keeps = text == "REF" || text == "GET";
    return keeps && first == Gives::condition ? first : Gives::unknown;
  }

  const Reading& reading_;
  const Statement& statement_;
  int depth_;
};

}  // namespace

Gives what_gives(const Reading& reading, const Statement& statement, Range range) {
  return Judge(reading, statement, 0).judge(range);
}

bool is_steady(const Reading& reading, const Statement& statement, Range range) {
  for (size_t i = range.begin; i < range.end; ++i) {
    const Token& token = statement.tokens[i];
    const bool changes = token.kind == TokenKind::word && token.text != "CODELIKE" &&
                         !contains(steady_words, token.text) &&
                         !reading.constants.contains(token.text) &&
                         !reading.constant_lines.contains(token.text);
    if (changes) return false;
  }
  return true;
}

const Token* lone_token(const Statement& statement, Range range) {
  return range.size() == 1 ? &statement.tokens[range.begin] : nullptr;
}

std::string with_exchanged(const Reading& reading, const Statement& statement, const Call& call,
                           size_t first, size_t second) {
  std::vector<Range> arguments = call.arguments;
  std::swap(arguments[first], arguments[second]);
  std::string text = reading.text(place_of(statement.tokens[call.word])) + "(";
  for (size_t i = 0; i < arguments.size(); ++i) {
    text += (i == 0 ? "" : ",") + reading.text(statement, arguments[i]);
  }
  return text + ")";
}

const Call* call_at(const Statement& statement, size_t word) {
  const auto call = std::ranges::lower_bound(statement.calls, word, {}, &Call::word);
  return call == statement.calls.end() || call->word != word ? nullptr : &*call;
}

}  // namespace quor_advice
