// A picture of the bars and of everything that a script draws.
#pragma once

#include <cstdint>
#include <string>

#include "../bars.h"
#include "../chart_options.h"
#include "engine/engine.h"

namespace quor_host {

/// What stands above a picture.
struct ChartTitle {
  std::string name;
  uint32_t period = 0;
};

/// Draws the last bars of a calculated script into an SVG or PNG file, or as SVG to the standard
/// output.
void draw_chart(const quor::engine::Script& script, const ChartTitle& title, const Bars& bars,
                const ChartOptions& options);

}  // namespace quor_host
