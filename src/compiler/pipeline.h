// The spine of the compiler: the passes in their fixed order.
#pragma once

#include <string>
#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Runs all compile passes. An empty script leaves the last compile in force. `script` is changed.
Status compile_script(CompileContext& context, std::string& script, std::string_view parameters,
                      std::string_view lines, std::string& error);

/// Compiles, makes the trial run and gives the report as JSON. No exception comes out, unless there
/// is no memory for the report of a failure.
std::string pre_parse(CompileContext& context, std::string script, std::string_view parameters,
                      std::string_view lines);

}  // namespace quor
