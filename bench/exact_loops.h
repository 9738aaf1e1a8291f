// Lines that charts show, as loops over arrays which take several rows at once where the processor
// can: each row's operations are the engine's in its order, so that the values are the same bit by
// bit. They tell how quickly the machine at hand could give them.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "plain_loops.h"

namespace quor_bench {

/// A line for each that the script draws, of as many values as there are bars.
using LoopOverLines = void (*)(const Bars& bars, std::span<Series> lines);

struct DrawnLines {
  std::string_view name;
  std::string_view script;
  std::array<std::string_view, 4> lines;  ///< their names; empty where there are fewer
  LoopOverLines exact;
};

std::span<const DrawnLines> drawn_lines();

/// Whether this processor can run the exact loops.
bool has_exact_loops();

}  // namespace quor_bench
