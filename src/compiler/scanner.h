// From the source to statement slots.
#pragma once

#include <string>
#include <vector>

#include "core/status.h"

namespace quor {

/// Strips comments and white space, encodes the signs that later passes must tell apart, and cuts
/// the source into slots. One slot stands for one source line as far as possible, because the index
/// of a slot is the line that errors report; empty slots are kept.
///
/// In a slot "@" is a comma, "?" a binary and "^" a unary minus, a backquote a unary plus, "&&" and
/// "||" the words AND and OR between blanks, "!" is "!=". Quoted text stays as it is.
///
/// Refuses an open quote and an unfinished statement, with the error text. `source` is
/// changed.
Status split_statements(std::string& source, std::vector<std::string>& slots, std::string& error);

}  // namespace quor
