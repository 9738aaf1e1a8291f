// Comparisons that come out the same on every bar: with null, with dates and times of another form.
#include <algorithm>
#include <array>
#include <cmath>

#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

struct DateWord {
  std::string_view word;
  double least;
  double most;
  std::string_view told;
};

constexpr DateWord date_words[] = {
    {"WEEKDAY", 0, 6, "from 0, Sunday, to 6, Saturday"},
    {"MONTH", 1, 12, "from 1 to 12"},
    {"DAY", 1, 31, "from 1 to 31"},
    {"HOUR", 0, 23, "from 0 to 23"},
    {"MINUTE", 0, 59, "from 0 to 59"},
    {"QUARTER", 1, 4, "from 1 to 4"},
    {"YEAR", 1900, 2200, "four digits, such as 2024"},
    {"TIME0", 0, 86399, "the seconds since midnight, from 0 to 86399"},
};

bool is_day(double number) {
  const auto rest = static_cast<int64_t>(std::fmod(number, 10000.0));
  return rest / 100 >= 1 && rest / 100 <= 12 && rest % 100 >= 1 && rest % 100 <= 31;
}

bool is_clock(double number) {
  const auto whole = static_cast<int64_t>(number);
  return whole >= 0 && whole <= 2400 && whole % 100 < 60;
}

/// The same day as DATE and as DATE1 write it: 20240105 and 1240105.
struct Day {
  double date;
  double date1;
};

/// A day written as 20240105, 1240105 or 240105.
std::optional<Day> day_of(double number) {
  if (number != std::trunc(number) || number < 10000.0 || !is_day(number)) return std::nullopt;
  if (number >= 19000000.0 && number < 22000000.0) return Day{number, number - 19000000.0};
  if (number >= 1000000.0 && number < 2000000.0) return Day{number + 19000000.0, number};
  if (number >= 1000000.0) return std::nullopt;
  const bool is_this_century = number < 700000.0;
  const double date1 = is_this_century ? number + 1000000.0 : number;
  return Day{date1 + 19000000.0, date1};
}

class ComparisonCheck {
 public:
  ComparisonCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), tokens_(statement.tokens), out_(out) {}

  void run() {
    for (size_t i = statement_.expression.begin + 1; i + 1 < tokens_.size(); ++i) {
      if (!is_comparison(tokens_[i])) continue;
      check_null(i);
      check_date(i);
    }
  }

 private:
  static bool is_null(const Token& token) {
    return token.text == "NULL" || token.text == "DRAWNULL" || token.text == "NAN";
  }

  /// Where the operand in front of the sign begins.
  size_t operand_before(size_t sign) const {
    const size_t last = sign - 1;
    if (tokens_[last].kind != TokenKind::close || statement_.partners[last] == absent) return last;
    const size_t open = statement_.partners[last];
    const bool is_call = open > 0 && tokens_[open - 1].kind == TokenKind::word;
    return is_call ? open - 1 : open;
  }

  size_t end_of_operand(size_t begin) const {
    const bool is_call = begin + 1 < tokens_.size() && tokens_[begin].kind == TokenKind::word &&
                         tokens_[begin + 1].kind == TokenKind::open;
    const size_t open = is_call ? begin + 1 : begin;
    const bool opens = tokens_[open].kind == TokenKind::open;
    if (!opens) return begin + 1;
    return statement_.partners[open] == absent ? tokens_.size() : statement_.partners[open] + 1;
  }

  void check_null(size_t sign) {
    const bool is_right = is_null(tokens_[sign + 1]);
    if (!is_right && !is_null(tokens_[sign - 1])) return;
    const size_t begin = is_right ? operand_before(sign) : sign - 1;
    const size_t end = is_right ? sign + 2 : end_of_operand(sign + 1);
    const Range operand = is_right ? Range{begin, sign} : Range{sign + 1, end};
    const std::string test = "ISNULL(" + reading_.text(statement_, operand) + ")";
    const bool differs = tokens_[sign].text == "<>" || tokens_[sign].text == "!";
    out_.push_back({place_of(statement_, {begin, end}),
                    std::string("a comparison with ") +
                        (is_right ? tokens_[sign + 1] : tokens_[sign - 1]).text + " is " +
                        (differs ? "1" : "0") + " on every bar",
                    "write " + (differs ? "NOT(" + test + ")" : test)});
  }

  /// The number behind the sign, up to where another operand of AND, a comma or the end follows.
  Range number_behind(size_t sign) const {
    size_t end = sign + 1;
    while (end < tokens_.size()) {
      const Token& token = tokens_[end];
      const bool ends = token.kind == TokenKind::comma || token.kind == TokenKind::close ||
                        token.kind == TokenKind::colon || is_comparison(token) ||
                        token.is_sign("&&") || token.is_sign("||") || token.is_sign("&") ||
                        token.is_sign("|");
      if (ends) break;
      end = token.kind == TokenKind::open ? end_of_operand(end) : end + 1;
    }
    return {sign + 1, end};
  }

  /// Whether the word in front of the sign is its whole operand.
  bool is_whole(size_t word) const {
    if (word == statement_.expression.begin) return true;
    const Token& before = tokens_[word - 1];
    return before.kind != TokenKind::sign || before.is_sign("&&") || before.is_sign("||") ||
           before.is_sign("&") || before.is_sign("|");
  }

  void check_date(size_t sign) {
    const Token& word = tokens_[sign - 1];
    if (word.kind != TokenKind::word || !is_whole(sign - 1)) return;
    if (reading_.constants.contains(word.text) || reading_.lines.contains(word.text)) return;
    const Range range = number_behind(sign);
    const auto value = reading_.constant_value(statement_, range);
    if (!value) return;
    const std::string& shown = tokens_[sign].text;
    const bool is_equal = shown == "=" || shown == "<>" || shown == "!";
    if (word.text == "DATE" || word.text == "DATE1") {
      check_day(word.text, range, *value);
    } else if (word.text == "TIME") {
      check_time(range, *value);
    } else {
      check_bounds(word.text, range, *value, is_equal);
    }
  }

  void add(Range range, std::string sentence, std::string suggestion = {}) {
    out_.push_back({place_of(statement_, range), std::move(sentence), std::move(suggestion)});
  }

  /// 2024-01-05 is a difference of three numbers.
  std::optional<double> parted_date(Range range) const {
    if (range.size() != 5 || !tokens_[range.begin + 1].is_sign("-")) return std::nullopt;
    double date = 0.0;
    for (size_t i = range.begin; i < range.end; i += 2) {
      const auto part = to_number(tokens_[i].text);
      if (!part) return std::nullopt;
      date = date * 100.0 + *part;
    }
    return date;
  }

  void check_day(const std::string& word, Range range, double value) {
    if (const auto date = parted_date(range)) {
      add(range, "the date is calculated: " + number_text(value),
          "write a date as one number: " + written(word, *date));
      return;
    }
    const auto day = day_of(value);
    if (day && value == (word == "DATE" ? day->date : day->date1)) return;
    if (value == 0.0) return;
    if (day) {
      add(range, word + " has another form of date", "write " + written(word, value));
    } else {
      add(range, number_text(value) + " is no date", "write a date as " + written(word, 20240105));
    }
  }

  static std::string written(const std::string& word, double value) {
    const auto day = day_of(value);
    if (!day) return number_text(value);
    return number_text(word == "DATE" ? day->date : day->date1);
  }

  void check_time(Range range, double value) {
    const bool is_whole = value == std::trunc(value);
    if (reading_.has_seconds || (is_whole && is_clock(value))) return;
    std::string meant = "930 for 09:30";
    const double minutes = std::trunc(value / 100.0);
    const double parts = std::round(value * 100.0);
    if (value > 2400.0 && is_clock(minutes)) {
      meant = number_text(minutes);
    } else if (value < 24.0 && value != std::trunc(value) && is_clock(parts)) {
      meant = number_text(parts);
    }
    add(range, "TIME is HHMM, hours and minutes, and never " + number_text(value),
        "write " + meant);
  }

  void check_bounds(const std::string& word, Range range, double value, bool is_equal) {
    const auto* const row = std::ranges::find(date_words, word, &DateWord::word);
    if (row == std::end(date_words)) return;
    const double slack = is_equal ? 0.0 : 1.0;  // HOUR<24 is a sound test
    if (value >= row->least - slack && value <= row->most + slack) return;
    add(range, word + " is never " + number_text(value), "it is " + std::string(row->told));
  }

  const Reading& reading_;
  const Statement& statement_;
  const std::vector<Token>& tokens_;
  std::vector<Problem>& out_;
};

}  // namespace

void warn_of_comparison_values(const Reading& reading, const Statement& statement,
                               std::vector<Problem>& out) {
  ComparisonCheck(reading, statement, out).run();
}

}  // namespace quor_advice
