#include "chart.h"

#include <algorithm>
#include <cmath>

#include "../fields.h"
#include "axes.h"
#include "caption.h"
#include "painter.h"

namespace quor_host {
namespace {

constexpr double title_height = 28.0;
constexpr double time_axis_height = 26.0;
constexpr size_t enough_bars = 250;  ///< to tell which lines share an axis
constexpr double gap = 8.0;          ///< above a panel that has no legend

bool has_shape(const Panel& panel, const char* shape_name) {
  return std::ranges::any_of(panel.records,
                             [shape_name](const Record* record) { return record->is(shape_name); });
}

/// How much of the height a lower panel wants: candles more than lines, sticks alone less, lines
/// that only say yes or no the least.
double weight_of(const Panel& panel) {
  if (panel.digits == 0 && panel.range.span() < 1.5) return 0.10;
  if (has_shape(panel, "CandleShape")) return 0.30;
  return has_shape(panel, "PolylineShape") ? 0.22 : 0.16;
}

/// The upper panel takes what the lower ones leave, which is at least four tenths. A single one
/// below gets more than one of several.
void place_panels(std::vector<Panel>& panels, const std::vector<Legend>& legends, double top,
                  double bottom) {
  double wanted = 0.0;
  for (size_t i = 1; i < panels.size(); ++i) wanted += weight_of(panels[i]);
  const double scale = std::min(panels.size() == 2 ? 1.3 : 1.0, 0.6 / std::max(wanted, 1e-9));
  for (size_t i = 0; i < panels.size(); ++i) {
    const double share = i == 0 ? 1.0 - wanted * scale : weight_of(panels[i]) * scale;
    Panel& panel = panels[i];
    panel.legend_top = i == 0 ? top : panels[i - 1].bottom + 2;
    const double height = share * (bottom - top);
    const double begin = i == 0 ? top : panels[i - 1].bottom;
    panel.top = std::round(panel.legend_top + std::max(gap, legends[i].height));
    panel.bottom = std::round(std::max(begin + height, panel.top + 1.0));
  }
}

/// Regions lie behind the bars, which they would dim. Signals and pictures at bars lie over lines,
/// and get their places before texts do.
double layer_of(const Record& record) {
  if (record.is("PolygonShape")) return 0.4;
  if (record.is("FuturesTradeShape") || record.is("NoticeShape")) return 2.5;
  if (record.is("ImageShape") && !record.flag("IsLastCandle")) return 2.6;
  return record.number("ZIndex");
}

/// The records from the lowest layer up. Candles of the script's own take the place of the bars.
void draw_layers(Painter painter, std::vector<const Record*> layers, const Record& bars) {
  const auto is_own = [&bars](const Record* record) {
    return record != &bars && record->is("CandleShape") && !record->flag("IsColorKLine");
  };
  if (std::ranges::any_of(layers, is_own)) std::erase(layers, &bars);
  std::ranges::stable_sort(layers, {}, [](const Record* record) { return layer_of(*record); });
  for (const Record* record : layers) {
    if (record == &bars || is_own(record)) painter.keep_clear(*record);
  }
  for (const Record* record : layers) painter.draw(*record);
}

/// The panels of the script, and one of the volume if it has none of its own.
std::vector<Panel> panels_of(const View& view, const View& wide, const std::vector<Record>& records,
                             const Record& volume, const ChartOptions& options) {
  constexpr int least_height = 200;
  const auto height = static_cast<size_t>(options.size.at(1));
  std::vector<Panel> panels = arrange(view, wide, records, 2 + height / least_height);
  if (panels.size() > 1 || options.no_volume || !view.has(field_volume)) return panels;
  std::vector<Panel> below = arrange(view, wide, {volume}, 1);
  below.front().records = {&volume};
  panels.push_back(below.front());
  return panels;
}

}  // namespace

void draw_chart(const Session& session, const Bars& bars, const std::string& bars_path,
                const ChartOptions& options) {
  const View view(session, bars, options.last);
  const View wide(session, bars, std::max(options.last, enough_bars));
  std::vector<Record> records = parse_records(session.shapes());
  records.insert(records.begin(), bars_record(view));
  const Record volume = volume_record();
  std::vector<Panel> panels = panels_of(view, wide, records, volume, options);
  const double width = options.size.at(0);
  const double height = options.size.at(1);
  Canvas canvas(options.path, options.size.at(0), options.size.at(1));
  const Theme& theme = theme_named(options.theme);
  const Sheet sheet{canvas, view, theme};
  canvas.fill({0.0, 0.0, width, height}, theme.ground);
  draw_title(sheet, session.subject(), bars_path, sheet_margin, width - sheet_margin);

  std::vector<Legend> legends;
  for (const Panel& panel : panels) {
    legends.push_back(lay_out_legend(sheet, panel, width - 2 * sheet_margin));
  }
  place_panels(panels, legends, sheet_margin + title_height,
               height - sheet_margin - time_axis_height + 6);
  const TimeAxis axis(sheet_margin, std::floor(width - value_axis_width(sheet, panels)),
                      view.first_row(), view.row_count() - view.first_row());
  const std::vector<TimeMark> marks =
      time_marks(view.keys(), view.first_row(), 46.0 / axis.row_width());
  for (const Panel& panel : panels) draw_grid(sheet, panel, axis, marks);
  draw_time_axis(sheet, axis, marks, panels.back().bottom);
  for (size_t i = 0; i < panels.size(); ++i) {
    const Panel& panel = panels[i];
    canvas.clip({axis.left(), panel.top, axis.right(), panel.bottom});
    draw_layers({canvas, view, theme, axis, panel}, panel.records, records.front());
    canvas.unclip();
    draw_value_axis(sheet, panel, axis, tags_of(sheet, panel, i == 0));
    draw_legend(sheet, legends[i], {axis.left(), panel.legend_top});
  }
  canvas.finish();
}

}  // namespace quor_host
