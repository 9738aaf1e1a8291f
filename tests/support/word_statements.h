// A statement around the call of a word.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/word_calls.h"
#include "tables/function_sets.h"

namespace quor_test {

/// What draws or acts stands alone, any other word gives its value to A. `arguments` don't count
/// for words that take none.
inline std::string statement_of(std::string_view word, std::string_view arguments) {
  const std::string text(word);
  if (quor::BareFunctionSet.contains(word)) return "A:=" + text + ";";
  if (quor::TradeSignalSet.contains(word)) return "C>O," + text + ";";
  if (word == "NOTICE") return "C>O,NOTICE('name');";
  const std::string call = text + "(" + std::string(arguments) + ")";
  // SOUND with nothing in front of it is a short form without its condition.
  const bool stands_alone = quor::OutputFunctionSet.contains(word) && word != "SOUND";
  return (stands_alone ? call : "A:=" + call) + ";";
}

/// The call of a word as it is meant.
inline std::string statement_of(std::string_view word) {
  return statement_of(word, arguments_of(word));
}

inline std::vector<std::string> split_arguments(std::string_view text) {
  std::vector<std::string> pieces(1);
  int depth = 0;
  for (const char c : text) {
    if (c == '(') ++depth;
    if (c == ')') --depth;
    if (c == ',' && depth == 0) {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  return pieces;
}

/// The word's call as it is meant but for one argument, of each position in turn.
inline std::vector<std::string> statements_with(std::string_view word, std::string_view argument) {
  std::vector<std::string> statements;
  const std::vector<std::string> pieces = split_arguments(arguments_of(word));
  for (size_t changed = 0; changed < pieces.size(); ++changed) {
    std::string arguments;
    for (size_t i = 0; i < pieces.size(); ++i) {
      arguments += (i == 0 ? "" : ",") + (i == changed ? std::string(argument) : pieces[i]);
    }
    statements.push_back(statement_of(word, arguments));
  }
  return statements;
}

}  // namespace quor_test
