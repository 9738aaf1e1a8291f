#include "chart.h"

#include <algorithm>
#include <cmath>

#include "painter.h"

namespace quor_host {
namespace {

const Color grid{0.90, 0.91, 0.93};
const Color label{0.35, 0.38, 0.43};
constexpr double margin = 12.0;
constexpr double value_axis_width = 74.0;
constexpr double time_axis_height = 26.0;
constexpr double gap = 14.0;
constexpr double text_size = 11.0;
constexpr size_t most_bars = 2000;

/// The upper panel takes what the lower ones leave; each of them gets a fifth, at most half in all.
void place_panels(std::vector<Panel>& panels, int picture_height) {
  const double height = picture_height - 2 * margin - time_axis_height;
  const auto below = static_cast<double>(panels.size() - 1);
  const double share = below == 0.0 ? 0.0 : std::min(0.2, 0.5 / below);
  double top = margin;
  for (Panel& panel : panels) {
    const double part = &panel == &panels.front() ? 1.0 - share * below : share;
    panel.top = top + gap;
    panel.bottom = top + part * height;
    top = panel.bottom;
  }
}

/// A step of 1, 2 or 5 times a power of ten that cuts the span into about `count` parts.
double nice_step(double span, double count) {
  const double raw = span / count;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  const double factor = raw / power;
  return power * (factor <= 1.0 ? 1.0 : factor <= 2.0 ? 2.0 : factor <= 5.0 ? 5.0 : 10.0);
}

std::string tick_text(double value, double step) {
  if (std::abs(value) < step / 2) return "0";
  const double unit = step >= 1e5 ? 1e6 : 1.0;
  const int digits = std::clamp(static_cast<int>(-std::floor(std::log10(step / unit))), 0, 6);
  return number_text(value / unit, digits) + (unit > 1.0 ? "M" : "");
}

void draw_value_axis(Canvas& canvas, const Panel& panel, const TimeAxis& axis) {
  const double step = nice_step(panel.range.span(), std::max(2.0, (panel.bottom - panel.top) / 40));
  // Counted, since adding a step to a huge value may change nothing.
  const double first = std::ceil(panel.range.low / step) * step;
  for (int tick = 0; tick < 100; ++tick) {
    const double value = first + tick * step;
    if (!(value <= panel.range.high)) break;
    const double y = panel.y(value);
    canvas.line({{axis.left, y}, {axis.right, y}}, {grid});
    canvas.text({axis.right + 6, y}, tick_text(value, step), label, text_size);
  }
  canvas.line({{axis.left, panel.bottom}, {axis.right, panel.bottom}}, {label});
}

void draw_time_axis(Canvas& canvas, const View& view, const TimeAxis& axis, double bottom) {
  const bool intraday = view.key(view.first_row()) % 1000000 != 0;
  const double room = canvas.extent("0000-00-00 00:00", text_size).x * (intraday ? 1.2 : 0.9);
  const auto step = std::max<size_t>(1, static_cast<size_t>(std::ceil(room / axis.step())));
  for (size_t row = view.first_row() + step / 2; row < view.row_count(); row += step) {
    const double x = axis.x(row);
    canvas.line({{x, bottom}, {x, bottom + 4}}, {label});
    const std::string text = key_text(view.key(row), intraday);
    canvas.text({x, bottom + 6}, text.substr(0, 16), label, text_size, {0.5, 0.0});
  }
}

/// Titles that the script shows, each with its value at the last bar.
void draw_legend(Canvas& canvas, const View& view, const Panel& panel, const TimeAxis& axis) {
  double x = axis.left + 4;
  for (const Record* record : panel.records) {
    const std::string title = record->text("Field1Text");
    if (!record->flag("TitleVisible") || title.starts_with("EMPTY_LINE_NAME_RESERVED")) continue;
    const double last = view.value(record->column("Field1Id"), view.last_row());
    const std::string text =
        title + (std::isfinite(last) ? " " + tick_text(last, panel.range.span() / 1000) : "");
    const double width = canvas.extent(text, text_size + 1).x;
    if (x + width > axis.right) break;
    // A record has one of these keys.
    const std::string brush =
        record->text("LineColor") + record->text("TextColor") + record->text("UpperShadowColor");
    canvas.text({x, panel.top - gap / 2}, text, resolve_brush(brush), text_size + 1);
    x += width + 16;
  }
}

/// The records from the lowest layer up. Candles of the script's own take the place of the bars.
void draw_layers(Painter painter, std::vector<const Record*> layers, const Record& bars) {
  const bool is_replaced = std::ranges::any_of(layers, [&bars](const Record* record) {
    return record != &bars && record->is("CandleShape") && !record->flag("IsColorKLine");
  });
  std::ranges::stable_sort(layers, {},
                           [](const Record* record) { return record->number("ZIndex"); });
  for (const Record* record : layers) {
    if (record != &bars || !is_replaced) painter.draw(*record);
  }
}

}  // namespace

void draw_chart(const Session& session, const Bars& bars, size_t last, int width, int height,
                const std::string& path) {
  std::vector<Record> records = parse_records(session.shapes());
  records.insert(records.begin(), bars_record(bars));
  const View view(session, bars, std::clamp<size_t>(last, 1, most_bars));
  std::vector<Panel> panels = arrange(view, records, 2 + static_cast<size_t>(height) / 200);
  place_panels(panels, height);
  const TimeAxis axis{margin, width - value_axis_width, view.first_row(),
                      view.row_count() - view.first_row()};
  Canvas canvas(path, width, height);
  canvas.rectangle({}, {axis.right + value_axis_width, 1.0 * height}, {1.0, 1.0, 1.0}, true);
  draw_time_axis(canvas, view, axis, panels.back().bottom);
  for (const Panel& panel : panels) {
    draw_value_axis(canvas, panel, axis);
    draw_legend(canvas, view, panel, axis);
  }
  for (const Panel& panel : panels) {
    canvas.clip({axis.left, panel.top}, {axis.right, panel.bottom});
    draw_layers({canvas, view, axis, panel}, panel.records, records.front());
  }
  canvas.finish();
}

}  // namespace quor_host
