// The vocabularies of the language, as views of the rows of its words.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "core/traits.h"

namespace quor {

struct FunctionRow {
  std::string_view word;
  int32_t id;
};

/// All words of the language by id. None has the id 24; two share 167.
std::span<const FunctionRow> FunctionIdTable();

/// The words with a trait, in the order of the families and their rows.
class WordsWith {
 public:
  explicit WordsWith(Traits trait);

  bool contains(std::string_view word) const;
  auto begin() const { return words_.begin(); }
  auto end() const { return words_.end(); }

 private:
  std::vector<std::string_view> words_;
};

/// Words whose call gives a drawing, a sound, a notice or a trade signal instead of a value. One
/// statement holds at most one of them.
const WordsWith& OutputFunctionSet();
/// Words that have the statement that uses them calculated from row 0 on every run.
const WordsWith& WholeSeriesFunctionSet();
/// Words whose scripts look ahead, as their reports tell.
const WordsWith& LookAheadFunctionSet();
/// Words that take no arguments and are written without parentheses.
const WordsWith& BareFunctionSet();
/// Words that may not stand as an argument behind another one.
const WordsWith& BranchFunctionSet();
/// Words that make a nameless statement an output line when they open it.
const WordsWith& BranchRangeFunctionSet();
/// Words that give a trade signal.
const WordsWith& TradeSignalSet();

}  // namespace quor
