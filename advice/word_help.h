// What a script's author wants to know about each built-in word: its form, arguments, null rule and
// an example. The one source for the program's help, for completion and for the index of words in
// the language reference.
#pragma once

#include <span>
#include <string_view>

namespace quor_advice {

/// One built-in word. The texts are plain English in UTF-8, without markup, and live as long as the
/// program.
struct WordHelp {
  std::string_view word;          ///< in capitals
  std::string_view form;          ///< how it is written: "MA(X,N)", "DAY", "COND,BK(QUANTITY)"
  int least = 0;                  ///< fewest arguments that the compiler takes in that form
  int most = 0;                   ///< most of them; -1: any number, for drawings style items
  std::string_view summary;       ///< what it gives or does, in sentences
  std::string_view arguments;     ///< "X: the series; N: the period"; empty without arguments
  std::string_view nulls;         ///< first value and what null does; empty if nothing is special
  std::string_view example;       ///< a whole script that compiles
  std::string_view section = {};  ///< title of its section in the language reference
};

/// All built-in words, in alphabetical order.
std::span<const WordHelp> word_help();

/// The help of a word, written in capitals or not; null if there is no such word.
const WordHelp* find_word_help(std::string_view word);

}  // namespace quor_advice
