// A picture of the bars and of everything that a script draws.
#pragma once

#include <string>

#include "../bars.h"
#include "../chart_options.h"
#include "../session.h"

namespace quor_host {

/// Draws the last bars of a calculated script, which came from a file, into an SVG or PNG file.
void draw_chart(const Session& session, const Bars& bars, const std::string& bars_path,
                const ChartOptions& options);

}  // namespace quor_host
