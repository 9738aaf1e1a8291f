// Numbers beyond what a word can work with, though it takes them.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

constexpr double endless = std::numeric_limits<double>::infinity();

/// Where a constant argument must lie.
struct Limits {
  std::string_view word;
  size_t index;
  double above;  ///< it must be greater
  double most;
  std::string_view meaning;
  std::string_view advice;
};

constexpr double below(double bound) { return bound - 1E-9; }

constexpr Limits limits[] = {
    {"AMA", 1, 0, 1, "the weight of AMA is a factor from 0 to 1",
     "an average of N bars is EMA(X,N)"},
    {"DMA", 1, 0, below(1), "the weight of DMA is a factor above 0 and below 1",
     "an average of N bars is EMA(X,N)"},
    {"TMA", 1, -2, below(2), "the weights of TMA are factors below 2", "such as TMA(C,0.9,0.1)"},
    {"TMA", 2, -2, below(2), "the weights of TMA are factors below 2", "such as TMA(C,0.9,0.1)"},
    {"SAR", 1, -endless, below(1), "the step of SAR is a factor", "such as 0.02"},
    {"SAR", 2, -endless, 1, "the limit of SAR is a factor", "such as 0.2"},
    {"SAR1", 1, -endless, below(1), "the step of SAR1 is a factor", "such as 0.02"},
    {"SAR1", 2, -endless, 1, "the limit of SAR1 is a factor", "such as 0.2"},
    {"SARSHOWTYPE", 1, -endless, below(1), "the step of SARSHOWTYPE is a factor", "such as 0.02"},
    {"SAR1SHOWTYPE", 1, -endless, below(1), "the step of SAR1SHOWTYPE is a factor", "such as 0.02"},
    {"STD", 1, 1, endless, "STD needs 2 bars and more", ""},
    {"VAR", 1, 1, endless, "VAR needs 2 bars and more", ""},
    {"TSMA", 1, 1, endless, "TSMA needs 2 bars and more", ""},
    {"SLOPE", 1, 1, endless, "SLOPE needs 2 bars and more", ""},
    {"FORCAST", 1, 1, endless, "FORCAST needs 2 bars and more", ""},
    {"CORRELATION", 2, 1, endless, "CORRELATION needs 2 bars and more", ""},
    {"COEFFICIENTR", 2, 1, endless, "COEFFICIENTR needs 2 bars and more", ""},
    {"KURTOSIS", 1, 3, endless, "KURTOSIS needs 4 bars and more", ""},
};

// What a period of 0 gives.
constexpr std::array<std::string_view, 4> zero_of_nothing = {"HHV", "LLV", "HV", "LV"};
constexpr std::array<std::string_view, 5> null_of_nothing = {"EMA", "EXPMA", "SMA", "TRMA",
                                                             "BARSSINCEN"};
// Their periods aren't cut, or are rounded up.
constexpr std::array<std::string_view, 4> take_fractions = {"SMMA", "HARMEAN", "COUNT", "EVERY"};

template <size_t size>
bool contains(const std::array<std::string_view, size>& words, std::string_view word) {
  return std::ranges::find(words, word) != words.end();
}

class LimitCheck {
 public:
  LimitCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), out_(out) {}

  void check(const Call& call) {
    if (call.close == absent) return;
    if (!check_limits(call)) check_period(call);
    check_percentage(call);
  }

 private:
  const std::string& word(const Call& call) const { return statement_.tokens[call.word].text; }

  std::optional<double> constant(const Call& call, size_t index) const {
    if (index >= call.arguments.size() || call.arguments[index].empty()) return std::nullopt;
    return reading_.constant_value(statement_, call.arguments[index]);
  }

  void add(Range range, std::string sentence, std::string suggestion = {}) {
    out_.push_back({place_of(statement_, range), std::move(sentence), std::move(suggestion)});
  }

  /// Of one call one number out of bounds says enough.
  bool check_limits(const Call& call) {
    for (const Limits& row : limits) {
      if (row.word != word(call)) continue;
      const auto value = constant(call, row.index);
      if (!value || (*value > row.above && *value <= row.most) || *value < 0.0) continue;
      add(call.arguments[row.index],
          std::string(row.meaning) + ", and is " + number_text(*value) + " here",
          std::string(row.advice));
      return true;
    }
    return false;
  }

  void check_period(const Call& call) {
    const PeriodArgument* const period = find_period(word(call));
    if (period == nullptr) return;
    const auto value = constant(call, period->index);
    if (!value) return;
    const Range range = call.arguments[period->index];
    if (word(call) == "REF" && *value < 0.0) {
      tell_later(call, *value, range);
    } else if (*value == 0.0) {
      tell_nothing(call, *period, range);
    } else if (*value != std::trunc(*value) && lone_token(statement_, range) != nullptr &&
               !contains(take_fractions, word(call))) {
      add(range,
          "the period of " + word(call) + " counts whole bars, " + number_text(*value) +
              " is read as " + number_text(std::trunc(*value)),
          "write a whole number");
    }
  }

  void tell_later(const Call& call, double value, Range range) {
    const std::string series = reading_.text(statement_, call.arguments[0]);
    add(range, "a period below 0 reads later bars, which nobody knows while a bar is the newest",
        "for an earlier bar write REF(" + series + "," + number_text(-value) + ")");
  }

  void tell_nothing(const Call& call, const PeriodArgument& period, Range range) {
    const std::string series = reading_.text(statement_, call.arguments[0]);
    if (contains(zero_of_nothing, word(call))) {
      add(range, word(call) + " over 0 bars is 0",
          "for all bars so far write " + word(call) + "(" + series + ",BARPOS)");
    } else if (contains(null_of_nothing, word(call)) ||
               (period.needs_all_bars && !period.takes_negative)) {
      add(range, word(call) + " over 0 bars has no value", "write a period of 1 and more");
    }
  }

  /// 0.9 where 90 is meant.
  void check_percentage(const Call& call) {
    const bool is_cost = word(call) == "COST";
    if (!is_cost && word(call) != "PERCENTILE") return;
    const size_t index = is_cost ? 0 : 2;
    const auto value = constant(call, index);
    if (!value || *value <= 0.0 || *value >= 1.0) return;
    const std::string meant = number_text(*value * 100.0);
    add(call.arguments[index], word(call) + " takes percent, from 0 to 100",
        is_cost ? "write COST(" + meant + ")" : "write " + meant);
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Problem>& out_;
};

}  // namespace

void warn_of_limits(const Reading& reading, const Statement& statement, std::vector<Problem>& out) {
  LimitCheck check(reading, statement, out);
  for (const Call& call : statement.calls) check.check(call);
}

}  // namespace quor_advice
