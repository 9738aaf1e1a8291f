// A statement around the call of a word.
#pragma once

#include <string>
#include <string_view>

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

}  // namespace quor_test
