// A statement around the call of a word.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/word_calls.h"
#include "vocabulary/function_sets.h"

namespace quor_test {

/// The call of a word; `arguments` don't count for words that take none.
inline std::string call_of(std::string_view word, std::string_view arguments) {
  const std::string text(word);
  return quor::BareFunctionSet().contains(word) ? text : text + "(" + std::string(arguments) + ")";
}

/// What draws or acts stands alone, any other word gives its value to A.
inline std::string statement_of(std::string_view word, std::string_view arguments) {
  if (quor::TradeSignalSet().contains(word)) return "C>O," + std::string(word) + ";";
  if (word == "NOTICE") return "C>O,NOTICE('name');";
  // SOUND with nothing in front of it is a short form without its condition.
  const bool stands_alone = quor::OutputFunctionSet().contains(word) && word != "SOUND";
  return (stands_alone ? "" : "A:=") + call_of(word, arguments) + ";";
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

inline std::string join_arguments(const std::vector<std::string>& pieces) {
  std::string text;
  for (const std::string& piece : pieces) text += (text.empty() ? "" : ",") + piece;
  return text;
}

/// The word's call as it is meant but for one argument, of each position in turn.
inline std::vector<std::string> statements_with(std::string_view word, std::string_view argument) {
  std::vector<std::string> statements;
  const std::vector<std::string> pieces = split_arguments(arguments_of(word));
  for (size_t changed = 0; changed < pieces.size(); ++changed) {
    std::vector<std::string> arguments = pieces;
    arguments[changed] = argument;
    statements.push_back(statement_of(word, join_arguments(arguments)));
  }
  return statements;
}

}  // namespace quor_test
