// A picture of the bars and of everything that a script draws.
#pragma once

#include <cstdint>
#include <string>

#include "../input/bars.h"
#include "../options/chart_options.h"
#include "engine/engine.h"
#include "surface.h"

namespace quor_host {

/// What stands above a picture.
struct ChartTitle {
  std::string name;
  uint32_t period = 0;
};

/// How many of the last bars a picture is made from: those in sight, and those that choose the
/// panes.
size_t drawn_bars(const ChartOptions& options);

/// Draws the last bars of a calculated script, of whose values the bars may have those of
/// `drawn_bars` alone, into an SVG or PNG file, or as SVG to the standard
/// output. `make_png` is null where no PNG can be drawn.
void draw_chart(const quor::engine::Script& script, const ChartTitle& title, const Bars& bars,
                const ChartOptions& options, MakeSurface* make_png);

}  // namespace quor_host
