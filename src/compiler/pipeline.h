// The spine of the compiler: the passes in their fixed order.
#pragma once

#include <string>
#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Removes what a previous compile left; reserved variables stay.
void reset_compile_state(CompileContext& context);

/// Makes the variable through which scripts read a data field and enters its word into the declared
/// names. With `add_column` set the field gets its column at once; of a word that is there already
/// the table gets the old column, too.
Variable& add_reserved_variable(CompileContext& context, std::string_view word, uint32_t column_id,
                                bool add_column);

/// Runs all compile passes. An empty script leaves the last compile in force. `script` is changed.
Status compile_script(CompileContext& context, std::string& script, std::string_view parameters,
                      std::string_view lines, std::string& error);

/// Compiles, makes the trial run and gives the report as JSON. No exception comes out, unless there
/// is no memory for the report of a failure.
std::string pre_parse(CompileContext& context, std::string script, std::string_view parameters,
                      std::string_view lines);

}  // namespace quor
