// A picture of the bars and of everything that a script draws.
#pragma once

#include <string>

#include "../bars.h"
#include "../session.h"
#include "options.h"

namespace quor_host {

/// What the bars are of.
struct BarsOrigin {
  std::string path;
  Subject subject;
};

/// Draws the last bars of a calculated script into an SVG or PNG file.
void draw_chart(const Session& session, const Bars& bars, const BarsOrigin& origin,
                const ChartOptions& options);

}  // namespace quor_host
