#include "vocabulary/function_sets.h"

#include <algorithm>

#include "vocabulary/families.h"

namespace quor {
namespace {

std::vector<FunctionRow> rows_by_id() {
  std::vector<FunctionRow> rows;
  for (const Family family : function_families()) {
    for (const WordRow& row : family()) rows.push_back({row.word, row.id});
  }
  std::ranges::stable_sort(rows, {}, &FunctionRow::id);
  return rows;
}

template <Traits trait>
const WordsWith& words_with() {
  static const WordsWith words(trait);
  return words;
}

}  // namespace

std::span<const FunctionRow> FunctionIdTable() {
  static const std::vector<FunctionRow> rows = rows_by_id();
  return rows;
}

WordsWith::WordsWith(Traits trait) {
  for (const Family family : function_families()) {
    for (const WordRow& row : family()) {
      if (row.traits.has(trait)) words_.push_back(row.word);
    }
  }
}

bool WordsWith::contains(std::string_view word) const {
  return std::ranges::find(words_, word) != words_.end();
}

const WordsWith& OutputFunctionSet() { return words_with<draws>(); }
const WordsWith& WholeSeriesFunctionSet() { return words_with<in_full>(); }
const WordsWith& LookAheadFunctionSet() { return words_with<told_ahead>(); }
const WordsWith& BareFunctionSet() { return words_with<bare>(); }
const WordsWith& BranchFunctionSet() { return words_with<branches>(); }
const WordsWith& BranchRangeFunctionSet() { return words_with<opens_line>(); }
const WordsWith& TradeSignalSet() { return words_with<trades>(); }

}  // namespace quor
