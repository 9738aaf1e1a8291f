// The passes that replace a reference to data of another security, another period or a realtime
// quote by a reserved variable with a column of its own, which the host fills.
#pragma once

#include <string>
#include <string_view>

#include "compiler/compile_context.h"
#include "compiler/statement_text.h"

namespace quor {

/// "CODE$FIELD" and "UNIT$MULTIPLE$FIELD" in double quotes, right behind ":" or "=". A slot holds
/// one reference at most: what stands between its outermost quotes.
Status resolve_quoted_reference(CompileContext& context, std::string& slot,
                                const StatementErrors& errors);

/// The first `word(CODE,FIELD)` or `word(FIELD)` of the slot. Its arguments are read from the
/// `source` that the scanner left, at the place that the word has in the slot; throws
/// std::out_of_range if earlier passes have moved that place beyond the end.
Status resolve_realtime_reference(CompileContext& context, std::string& slot, std::string_view word,
                                  std::string_view source, const StatementErrors& errors);

}  // namespace quor
