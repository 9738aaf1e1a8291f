// The sets of function words that the compiler asks for.
#pragma once

#include "tables/word_set.h"

namespace quor {

/// Words whose call gives a drawing, a sound, a notice or a trade signal instead of a value. One
/// statement holds at most one of them.
extern const WordSet OutputFunctionSet;

/// Words that have the statement that uses them calculated from row 0 on every run.
extern const WordSet WholeSeriesFunctionSet;

/// Words whose value at a bar depends on later bars.
extern const WordSet LookAheadFunctionSet;

/// Words that take no arguments and are written without parentheses.
extern const WordSet BareFunctionSet;

/// Words that may not stand as an argument behind another one.
extern const WordSet BranchFunctionSet;

/// Words that make a nameless statement an output line when they open it.
extern const WordSet BranchRangeFunctionSet;

extern const WordSet TradeSignalSet;

}  // namespace quor
