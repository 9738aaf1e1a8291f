// A picture of the bars and of everything that a script draws.
#pragma once

#include <cstddef>
#include <string>

#include "../bars.h"
#include "../session.h"

namespace quor_host {

struct ChartSize {
  int width = 1200;
  int height = 800;
};

/// Reads "1200x800"; throws HostError for another form and for a size beyond 200 to 8000 pixels.
ChartSize parse_size(const std::string& text);

/// Draws the last bars of a calculated script into an SVG or PNG file.
void draw_chart(const Session& session, const Bars& bars, size_t last, ChartSize size,
                const std::string& path);

}  // namespace quor_host
