// Grid lines, the texts of the axes, and tags for values that matter.
#pragma once

#include <vector>

#include "../panes/panels.h"
#include "sheet.h"
#include "time_axis.h"
#include "time_marks.h"

namespace quor_host {

/// The values of grid lines, from the lowest up: three or more where there is room for so many.
struct Ticks {
  double step = 1.0;
  std::vector<double> values;
};
Ticks ticks_of(const Panel& panel);

/// The width that the texts of the value axes take.
double value_axis_width(const Sheet& sheet, const std::vector<Panel>& panels);

/// A value on the axis, such as the last price.
struct Tag {
  double value = 0.0;
  std::string text;
  Color color;
  bool is_filled = false;
};
/// The last price where the panel holds the bars, and the levels that a script draws.
std::vector<Tag> tags_of(const Sheet& sheet, const Panel& panel, bool holds_bars);

void draw_grid(const Sheet& sheet, const Panel& panel, const TimeAxis& axis,
               const std::vector<TimeMark>& marks);
/// The texts of the ticks, those that a tag covers left out, and the tags.
void draw_value_axis(const Sheet& sheet, const Panel& panel, const TimeAxis& axis,
                     const std::vector<Tag>& tags);
void draw_time_axis(const Sheet& sheet, const TimeAxis& axis, const std::vector<TimeMark>& marks,
                    double top);

}  // namespace quor_host
