// One row of a family's table: all that sets a word apart from the others.
#pragma once

#include <memory>
#include <string_view>

#include "functions/traits.h"

namespace quor {

class BaseFunc;

struct WordRow {
  std::string_view word;
  std::unique_ptr<BaseFunc> (*make)(const WordRow& row);
  Traits traits;
};

/// The row of a word that is served by the class `Word`.
template <typename Word>
constexpr WordRow word_row(std::string_view word, Traits traits) {
  return {
      word,
      [](const WordRow& row) -> std::unique_ptr<BaseFunc> { return std::make_unique<Word>(row); },
      traits};
}

}  // namespace quor
