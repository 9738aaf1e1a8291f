// Words that need every bar, in a branch that is calculated only where it is chosen.
#include <algorithm>
#include <array>

#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

// What goes on from the bar before.
constexpr std::array<std::string_view, 25> carried = {
    "MA",      "EMA",         "EXPMA",        "EMAWH",    "SMA",    "MEMA",       "EXPMEMA",
    "AMA",     "DMA",         "TMA",          "TRMA",     "ADMA",   "BARSCOUNT",  "BARSSINCE",
    "BACKSET", "ZIGZAG",      "PEAK",         "PEAKBARS", "TROUGH", "TROUGHBARS", "SAR",
    "SAR1",    "SARSHOWTYPE", "SAR1SHOWTYPE", "FILTER"};

// What looks back on the values of an expression, which are noted bar by bar.
constexpr std::array<std::string_view, 23> looking_back = {
    "STD",     "STDP",    "VAR",     "VARP",        "DEVSQ",        "AVEDEV", "KURTOSIS", "SUM",
    "HHV",     "LLV",     "HV",      "LV",          "SLOPE",        "WMA",    "EMA2",     "COVAR",
    "FORCAST", "HHVBARS", "LLVBARS", "CORRELATION", "COEFFICIENTR", "SMMA",   "HARMEAN"};

bool needs_all_bars(const Statement& statement, const Call& call) {
  const std::string& word = statement.tokens[call.word].text;
  if (std::ranges::find(carried, word) != carried.end() || word == "FORCAST") return true;
  const bool looks_back = std::ranges::find(looking_back, word) != looking_back.end();
  return looks_back && !call.arguments.empty() && call.arguments[0].size() > 1;
}

/// What is calculated only where it is chosen: all but the first condition.
Range chosen_part(const Call& call) { return {call.arguments[1].begin, call.arguments.back().end}; }

class BranchCheck {
 public:
  BranchCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), out_(out) {}

  void run() {
    for (const Call& call : statement_.calls) {
      const std::string& word = statement_.tokens[call.word].text;
      if (!is_branch(word) && word != "IFF") continue;
      if (call.close == absent || call.arguments.size() < 2) continue;
      if (!is_steady(reading_, statement_, call.arguments[0])) check(call, chosen_part(call));
    }
  }

 private:
  /// Of calls in one another the outer one says enough.
  void check(const Call& branch, Range part) {
    size_t told = 0;
    for (const Call& call : statement_.calls) {
      if (call.word < part.begin || call.word >= part.end || call.word < told) continue;
      if (call.close == absent || !needs_all_bars(statement_, call)) continue;
      told = call.close;
      const Place place{statement_.tokens[call.word].begin, statement_.tokens[call.close].end};
      const std::string& word = statement_.tokens[call.word].text;
      const std::string name = free_name(call);
      out_.push_back({place,
                      word + " needs every bar, and here it sees only those for which " +
                          statement_.tokens[branch.word].text + " chooses it",
                      "give it a line of its own: " + name + ":=" + reading_.text(place) +
                          "; and write " + name + " here"});
    }
  }

  /// A name for what a call gives: MA5 for MA(C,5), and X, X2 and so on where that is taken.
  std::string free_name(const Call& call) const {
    const std::string period =
        call.arguments.empty() ? "" : reading_.text(statement_, call.arguments.back());
    const bool is_count = !period.empty() && std::ranges::all_of(period, is_digit);
    std::string name = statement_.tokens[call.word].text + period;
    if (!is_count || is_function(name)) name = "X";
    const std::string front = name;
    for (int n = 2; reading_.lines.contains(name); ++n) name = front + "X" + std::to_string(n);
    return name;
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Problem>& out_;
};

}  // namespace

void warn_of_branches(const Reading& reading, const Statement& statement,
                      std::vector<Problem>& out) {
  BranchCheck(reading, statement, out).run();
}

}  // namespace quor_advice
