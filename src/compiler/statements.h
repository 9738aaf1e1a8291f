// From one rewritten slot to variables in the pool.
#pragma once

#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Compiles a statement: `name:=expression`, `name:expression,styles`, an expression, or a call
/// with style items behind it. An output line gets a drawing statement of its own behind it.
Status compile_statement(CompileContext& context, std::string_view slot, int32_t line,
                         std::string& error);

}  // namespace quor
