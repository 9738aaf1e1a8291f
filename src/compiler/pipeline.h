// The spine of the compiler: the passes in their fixed order.
#pragma once

#include <string>
#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Removes what a previous compile left; reserved variables stay.
void reset_compile_state(CompileContext& context);

/// Declares a data field that scripts read, for as long as the instance lives, and enters its word
/// into the declared names. With `add_column` set the field gets its column at once.
void add_reserved_variable(CompileContext& context, std::string_view word, uint32_t column_id,
                           bool add_column);

/// As `add_reserved_variable` for a reference that the script makes, and that goes with it.
void add_reference(CompileContext& context, std::string_view word, uint32_t column_id);

/// Runs all compile passes. An empty script leaves the last compile in force. `script` is changed.
Status compile_script(CompileContext& context, std::string& script, std::string_view parameters,
                      std::string_view lines, std::string& error);

/// Compiles, makes the trial run and gives the report as JSON. No exception comes out, unless there
/// is no memory for the report of a failure.
std::string pre_parse(CompileContext& context, std::string script, std::string_view parameters,
                      std::string_view lines);

}  // namespace quor
