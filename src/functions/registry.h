// The function objects of all words of the language.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "functions/base_func.h"

namespace quor {

/// One row of a family's table: a word and what makes its object.
struct WordRow {
  std::string_view word;
  std::unique_ptr<BaseFunc> (*make)(std::string_view word);
};

/// The row of a word that is served by the class `Word`.
template <typename Word>
constexpr WordRow word_row(std::string_view word) {
  return {word, [](std::string_view name) -> std::unique_ptr<BaseFunc> {
            return std::make_unique<Word>(name);
          }};
}

/// Builds the objects of all words, once for the process; any thread may call it.
void build_function_registry();

/// The object of a word; null for a text that is no function word. Read-only once built.
const BaseFunc* find_function(std::string_view word);

}  // namespace quor
