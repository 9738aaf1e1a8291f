// The function objects of all words of the language.
#pragma once

#include <string_view>

#include "core/base_func.h"

namespace quor {

/// Builds the objects of all words, once for the process; any thread may call it.
void build_function_registry();

/// The object of a word; null for a text that is no function word. Read-only once built.
const BaseFunc* find_function(std::string_view word);

}  // namespace quor
