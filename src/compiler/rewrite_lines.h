// The passes for statements without a name that draw: stick words, dot words, and calls that give a
// series.
#pragma once

#include <string>

#include "compiler/statement_text.h"
#include "core/data_pool_center.h"

namespace quor {

/// `EXPR,STICK` and the other stick words become a call of STICKLINE1. A statement with a name
/// keeps the word as a style item of its line.
Status rewrite_stick_words(std::string& slot, const StatementErrors& errors);

/// `EXPR,CROSSDOT` and `EXPR,CIRCLEDOT` get a generated name, so that they are output lines.
Status rewrite_dot_words(DataPoolCenter& pool, std::string& slot, const StatementErrors& errors);

/// A statement that opens with a branch or range call gets a generated name, too.
void name_series_call(DataPoolCenter& pool, std::string& slot);

}  // namespace quor
