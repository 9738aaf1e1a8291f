#include "axes.h"

#include <algorithm>
#include <cmath>

#include "../input/fields.h"
#include "../panes/measures.h"
#include "../panes/numbers.h"

namespace quor_host {
namespace {

double pixel(double y) { return std::floor(y) + 0.5; }

/// Counted, since adding a step to a huge value may change nothing.
std::vector<double> multiples(double step, const Range& range) {
  std::vector<double> values;
  const double first = std::ceil(range.low / step);
  for (int i = 0; i < 100 && (first + i) * step <= range.high; ++i) {
    values.push_back((first + i) * step);
  }
  return values;
}

Tag last_price(const Sheet& sheet) {
  const View& view = sheet.view;
  const double close = view.value(field_close, view.last_row());
  const double before = view.row_count() > 1 ? view.value(field_close, view.last_row() - 1) : close;
  const int digits = decimals_of(view.series(field_close).values());
  return {close, grouped_text(close, digits), close < before ? sheet.theme.fall : sheet.theme.rise,
          true};
}

bool meets_tag(const Panel& panel, const std::vector<Tag>& tags, double y, double distance) {
  return std::ranges::any_of(
      tags, [&](const Tag& tag) { return std::abs(panel.y(tag.value) - y) < distance; });
}

double tag_y(const Panel& panel, double value) {
  return std::clamp(panel.y(value), panel.top + half_tag, panel.bottom - half_tag);
}

}  // namespace

Ticks ticks_of(const Panel& panel) {
  const double most = std::max(1.0, panel.height() / least_tick_room);
  double count = std::max(1.0, panel.height() / tick_room);
  Ticks ticks;
  do {
    ticks.step = std::max(nice_step(panel.range.span(), count), panel.digits == 0 ? 1.0 : 0.0);
    ticks.values = multiples(ticks.step, panel.range);
  } while (ticks.values.size() < enough_ticks && (count *= 1.5) < most);
  return ticks;
}

double value_axis_width(const Sheet& sheet, const std::vector<Panel>& panels) {
  double width = 40.0;
  for (const Panel& panel : panels) {
    const Ticks ticks = ticks_of(panel);
    for (const double value : ticks.values) {
      const std::string text = tick_text(value, ticks.step, panel.range.reach());
      width = std::max(width, sheet.canvas.extent(text, {{}, axis_text_size}).x);
    }
    for (const Tag& tag : tags_of(sheet, panel, &panel == &panels.front())) {
      width = std::max(width, sheet.canvas.extent(tag.text, {{}, axis_text_size, true}).x);
    }
  }
  return width + 16;
}

std::vector<Tag> tags_of(const Sheet& sheet, const Panel& panel, bool holds_bars) {
  std::vector<Tag> tags;
  if (holds_bars) tags.push_back(last_price(sheet));
  if (holds_bars && !std::isfinite(tags.front().value)) tags.clear();
  for (const auto& [record, value] : panel.levels) {
    const int digits = std::round(value) == value ? 0 : panel.digits;
    tags.push_back({value, short_text(value, digits), sheet.theme.text(record->text("LineColor"))});
  }
  return tags;
}

void draw_grid(const Sheet& sheet, const Panel& panel, const TimeAxis& axis,
               const std::vector<TimeMark>& marks) {
  const auto& [canvas, view, theme] = sheet;
  for (const double value : ticks_of(panel).values) {
    const double y = pixel(panel.y(value));
    canvas.line({{axis.left(), y}, {axis.right(), y}}, {theme.grid});
  }
  for (const TimeMark& mark : marks) {
    const double x = axis.x(mark.row);
    canvas.line({{x, panel.top}, {x, panel.bottom}}, {mark.begins_month ? theme.mark : theme.grid});
  }
  const double foot = pixel(panel.bottom);
  canvas.line({{axis.left(), foot}, {axis.right(), foot}}, {theme.mark});
}

void draw_value_axis(const Sheet& sheet, const Panel& panel, const TimeAxis& axis,
                     const std::vector<Tag>& tags) {
  const auto& [canvas, view, theme] = sheet;
  const Ticks ticks = ticks_of(panel);
  for (const double value : ticks.values) {
    const double y = panel.y(value);
    if (meets_tag(panel, tags, y, 2 * half_tag - 1)) continue;
    const std::string text = tick_text(value, ticks.step, panel.range.reach());
    canvas.text({axis.right() + 8, y}, text, {theme.label, axis_text_size});
  }
  std::vector<Tag> drawn;
  for (const Tag& tag : tags) {
    const double y = tag_y(panel, tag.value);
    if (meets_tag(panel, drawn, y, 2 * half_tag - 2)) continue;
    drawn.push_back(tag);
    if (!tag.is_filled) {
      canvas.text({axis.right() + 8, y}, tag.text, {tag.color, axis_text_size});
      continue;
    }
    const Lettering lettering{ink_on(tag.color), axis_text_size, true};
    const double width = canvas.extent(tag.text, lettering).x + 10;
    const double line = pixel(panel.y(tag.value));
    Color pale = tag.color;
    pale.alpha = last_price_alpha;
    canvas.line({{axis.left(), line}, {axis.right(), line}}, {pale, 1.0, {1.0, 3.0}});
    canvas.tag({axis.right() + 3, y - half_tag, axis.right() + 3 + width, y + half_tag}, tag.color);
    canvas.text({axis.right() + 8, y}, tag.text, lettering);
  }
}

void draw_time_axis(const Sheet& sheet, const TimeAxis& axis, const std::vector<TimeMark>& marks,
                    double top) {
  const auto& [canvas, view, theme] = sheet;
  for (const TimeMark& mark : marks) {
    const double x = axis.x(mark.row);
    canvas.line({{x, top}, {x, top + 4}}, {theme.mark});
    const Lettering lettering{mark.begins_month ? theme.ink : theme.label, axis_text_size,
                              mark.begins_year};
    const double half = canvas.extent(mark.text, lettering).x / 2;
    canvas.text({std::max(x, half + 2), top + 6}, mark.text, lettering, {0.5, 0.0});
  }
}

}  // namespace quor_host
