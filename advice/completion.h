// What can be written at a place of a script.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reading.h"

namespace quor_advice {

enum class CompletionKind { function, field, line, constant, style, colour, text, keyword, form };

/// What is offered first has the least: the script's own names, and what a place asks for.
int rank_of(CompletionKind kind);

struct Completion {
  std::string label;
  CompletionKind kind = CompletionKind::function;
  std::string detail;  ///< its form, or what it is, in a few words
  std::string about;   ///< sentences; may be empty
  /// A snippet: ${1:X} is a place to fill in. The label alone where parentheses stand behind it.
  std::string insert;
};

struct Completions {
  Place replaced;  ///< what is written of the word already
  std::vector<Completion> items;
};

/// Nothing in comments and in texts that can hold anything.
Completions complete(const Reading& reading, size_t offset);

/// What the words of the language are like at the start of a statement: patterns of whole ones.
std::vector<Completion> statement_forms();

}  // namespace quor_advice
