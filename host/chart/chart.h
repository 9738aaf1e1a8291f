// A picture of the bars and of everything that a script draws.
#pragma once

#include <cstddef>
#include <string>

#include "../bars.h"
#include "../session.h"

namespace quor_host {

struct Size {
  int width = 0;
  int height = 0;
};

/// Draws the last bars of a calculated script into an SVG or PNG file.
void draw_chart(const Session& session, const Bars& bars, size_t last, Size size,
                const std::string& path);

}  // namespace quor_host
