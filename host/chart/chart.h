// A picture of the bars and of everything that a script draws.
#pragma once

#include <cstddef>
#include <string>

#include "../bars.h"
#include "../session.h"

namespace quor_host {

/// Draws the last bars of a calculated script into an SVG or PNG file.
void draw_chart(const Session& session, const Bars& bars, size_t last, int width, int height,
                const std::string& path);

}  // namespace quor_host
