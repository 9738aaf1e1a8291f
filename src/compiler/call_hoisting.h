// Takes the function calls out of a statement's text.
#pragma once

#include <string>
#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Finds a call of `word` at or behind `from`: `start` is its first byte, `end` the position of the
/// ")" that closes it, or for a bare word the place behind it. False if there is none, or if its
/// parentheses don't close; then `end` is left alone.
bool find_call(std::string_view text, std::string_view word, size_t from, size_t& start,
               size_t& end);

/// Compiles every call of the text into a hidden variable with its arguments and leaves a hidden
/// name in its place. Calls inside arguments go first, by recursion. `output_count` counts the
/// words that draw or act over all levels of a statement; a second one is refused.
Status hoist_calls(CompileContext& context, std::string& text, int32_t line,
                   uint32_t parent_column_id, std::string& error, int& output_count);

/// Whether an argument is a style word and so needs no scan.
bool is_style_argument(std::string_view text);

}  // namespace quor
