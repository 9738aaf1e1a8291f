// Turns older statement forms into plain statements, by text replacement.
#pragma once

#include <string>
#include <vector>

#include "compiler/compile_context.h"

namespace quor {

/// Upper-cases each slot outside quotes and runs the rewriting passes over it in their fixed order,
/// each on what the one before has left. Works through all slots and stops at the first status.
Status rewrite_statements(CompileContext& context, std::vector<std::string>& slots,
                          std::string& error);

}  // namespace quor
