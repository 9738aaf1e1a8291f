// The tables of words, one per source unit.
#pragma once

#include <span>

#include "functions/registry.h"

namespace quor {

using Family = std::span<const WordRow> (*)();

std::span<const WordRow> moving_average_words();
std::span<const WordRow> reference_words();
std::span<const WordRow> polyline_words();

/// All families of the language.
std::span<const Family> function_families();

}  // namespace quor
