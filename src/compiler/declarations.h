// Words that name data which the host delivers.
#pragma once

#include <cstdint>
#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Declares a data field that scripts read, for as long as the instance lives, and enters its word
/// into the declared names. With `add_column` set the field gets its column at once; of a word that
/// is there already the table gets the old column, too.
void add_reserved_variable(CompileContext& context, std::string_view word, uint32_t column_id,
                           bool add_column);

/// As `add_reserved_variable`, with a column, for a reference that the script makes and that goes
/// with it.
void add_reference(CompileContext& context, std::string_view word, uint32_t column_id);

}  // namespace quor
