// The title of a picture and the legends of its panels.
#pragma once

#include <string>
#include <vector>

#include "../panes/panels.h"
#include "sheet.h"

namespace quor_host {

/// Name, period and date of the last bar, its close and how far that is from the one before.
void draw_title(const Sheet& sheet, const std::string& name, uint32_t period, double top,
                double right);

/// "Daily", "5 min"; empty for a code of no known period, or one of days where the bars are of
/// times.
std::string period_name(uint32_t code, bool intraday);

struct LegendEntry {
  std::string text;
  std::string brush;
  Point at;  ///< from the upper left corner of the legend
};

struct Legend {
  std::vector<LegendEntry> entries;
  double height = 0.0;
};

/// Titles that the script shows, each with its value at the last bar, in as many lines as they need
/// but no more than three.
Legend lay_out_legend(const Sheet& sheet, const Panel& panel, double width);
void draw_legend(const Sheet& sheet, const Legend& legend, Point corner);

}  // namespace quor_host
