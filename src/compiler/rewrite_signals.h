// The passes for statements that act: a condition with NOTICE or a trade word behind it.
#pragma once

#include <string>
#include <string_view>

#include "compiler/statement_text.h"

namespace quor {

/// `COND,NOTICE('name')` becomes NOTICE(COND@'source'@'name'). `source` is the statement as the
/// scanner left it; the name is taken from there at the place that the word has in the slot. Throws
/// std::out_of_range if earlier passes have moved that place beyond the end of `source`.
Status rewrite_notice(std::string& slot, std::string_view source, const StatementErrors& errors);

/// `COND,BK` and the other trade words, bare or with a quantity, become BK(COND@'source') or
/// BK(COND@'source'@n); `source` as for a notice.
Status rewrite_trade_word(std::string& slot, std::string_view source,
                          const StatementErrors& errors);

}  // namespace quor
