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

const WordsWith& OutputFunctionSet() {
  static const WordsWith words(draws);
  return words;
}

const WordsWith& WholeSeriesFunctionSet() {
  static const WordsWith words(in_full);
  return words;
}

const WordsWith& LookAheadFunctionSet() {
  static const WordsWith words(told_ahead);
  return words;
}

const WordsWith& BareFunctionSet() {
  static const WordsWith words(bare);
  return words;
}

const WordsWith& BranchFunctionSet() {
  static const WordsWith words(branches);
  return words;
}

const WordsWith& BranchRangeFunctionSet() {
  static const WordsWith words(opens_line);
  return words;
}

const WordsWith& TradeSignalSet() {
  static const WordsWith words(trades);
  return words;
}

}  // namespace quor
