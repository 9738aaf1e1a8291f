#include "word_help.h"

#include <algorithm>
#include <string>
#include <vector>

#include "words/families.h"

namespace quor_advice {
namespace {

struct Family {
  std::string_view section;
  std::span<const WordHelp> (*words)();
};

constexpr Family families[] = {
    {"Arithmetic and logic", arithmetic_help},
    {"Moving averages", average_help},
    {"Windows", window_help},
    {"Other bars", other_bar_help},
    {"Date and time", date_help},
    {"Patterns", pattern_help},
    {"Market data", market_help},
    {"Notices, signals and sounds", signal_help},
    {"Drawing", drawing_help},
};

std::vector<WordHelp> sorted_help() {
  std::vector<WordHelp> all;
  for (const Family& family : families) {
    for (WordHelp help : family.words()) {
      help.section = family.section;
      all.push_back(help);
    }
  }
  std::ranges::sort(all, {}, &WordHelp::word);
  return all;
}

std::string in_capitals(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

}  // namespace

std::span<const WordHelp> word_help() {
  static const std::vector<WordHelp> all = sorted_help();
  return all;
}

const WordHelp* find_word_help(std::string_view word) {
  const std::string upper = in_capitals(word);
  const auto all = word_help();
  const auto found = std::ranges::lower_bound(all, upper, {}, &WordHelp::word);
  return found != all.end() && found->word == upper ? &*found : nullptr;
}

}  // namespace quor_advice
