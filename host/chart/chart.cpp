#include "chart.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <span>

#include "../panes/layout.h"
#include "../panes/measures.h"
#include "axes.h"
#include "caption.h"
#include "painter.h"

namespace quor_host {
namespace {

constexpr double title_height = 28.0;
constexpr double time_axis_height = 26.0;
constexpr double gap = 8.0;  ///< above a panel that has no legend

void place_panels(std::vector<Panel>& panels, const std::vector<Legend>& legends, double top,
                  double bottom) {
  const std::vector<double> shares = shares_of(panels);
  for (size_t i = 0; i < panels.size(); ++i) {
    Panel& panel = panels[i];
    panel.legend_top = i == 0 ? top : panels[i - 1].bottom + 2;
    const double height = shares[i] * (bottom - top);
    const double begin = i == 0 ? top : panels[i - 1].bottom;
    panel.top = std::round(panel.legend_top + std::max(gap, legends[i].height));
    panel.bottom = std::round(std::max(begin + height, panel.top + 1.0));
  }
}

void draw_layers(Painter painter, const Panel& panel, const Record& bars) {
  const std::vector<const Record*> layers = layers_of(panel, bars);
  for (const Record* record : layers) {
    if (record == &bars || are_own_candles(*record, bars)) painter.keep_clear(*record);
  }
  for (const Record* record : layers) painter.draw(*record);
}

/// Values of the columns of a script, NaN for a column that it doesn't have.
class Columns {
 public:
  explicit Columns(const quor::engine::Script& script) : script_(script) {}

  double value(uint32_t row, uint32_t column) {
    const auto [known, is_new] = columns_.try_emplace(column);
    if (is_new) known->second = find(column);
    if (known->second.empty()) return std::numeric_limits<double>::quiet_NaN();
    return known->second[row];
  }

 private:
  std::span<const double> find(uint32_t column) const {
    try {
      return script_.column(column);
    } catch (const quor::engine::Misuse&) {
      return {};
    }
  }

  const quor::engine::Script& script_;
  std::map<uint32_t, std::span<const double>> columns_;
};

/// What the volume is drawn by where it is wanted, and as many panels as the height has room for.
std::vector<Panel> panels_of_sheet(const View& view, const View& wide,
                                   const std::vector<Record>& records, const Record& volume,
                                   const ChartOptions& options) {
  constexpr int least_height = 200;
  const auto height = static_cast<size_t>(options.size.at(1));
  return panels_of(view, wide, records, options.no_volume ? nullptr : &volume,
                   2 + height / least_height);
}

}  // namespace

size_t drawn_bars(const ChartOptions& options) { return std::max(options.last, enough_bars); }

void draw_chart(const quor::engine::Script& script, const ChartTitle& title, const Bars& bars,
                const ChartOptions& options, MakeSurface* make_png) {
  Columns columns(script);
  const CellReader cells = [&columns](uint32_t row, uint32_t column) {
    return columns.value(row, column);
  };
  const View view(cells, bars, options.last);
  const View wide(cells, bars, drawn_bars(options));
  std::vector<Record> records = drawing_records(script);
  records.insert(records.begin(), bars_record(view));
  const Record volume = volume_record();
  std::vector<Panel> panels = panels_of_sheet(view, wide, records, volume, options);
  const double width = options.size.at(0);
  const double height = options.size.at(1);
  Canvas canvas(options.path, options.size.at(0), options.size.at(1), make_png);
  const Theme& theme = theme_named(options.theme);
  const Sheet sheet{canvas, view, theme};
  canvas.fill({0.0, 0.0, width, height}, theme.ground);
  draw_title(sheet, title.name, title.period, sheet_margin, width - sheet_margin);

  std::vector<Legend> legends;
  for (const Panel& panel : panels) {
    legends.push_back(lay_out_legend(sheet, panel, width - 2 * sheet_margin));
  }
  place_panels(panels, legends, sheet_margin + title_height,
               height - sheet_margin - time_axis_height + 6);
  const TimeAxis axis(sheet_margin, std::floor(width - value_axis_width(sheet, panels)),
                      view.first_row(), view.row_count() - view.first_row());
  const std::vector<TimeMark> marks =
      time_marks(view.keys(), view.first_row(), time_mark_room / axis.row_width());
  for (const Panel& panel : panels) draw_grid(sheet, panel, axis, marks);
  draw_time_axis(sheet, axis, marks, panels.back().bottom);
  for (size_t i = 0; i < panels.size(); ++i) {
    const Panel& panel = panels[i];
    canvas.clip({axis.left(), panel.top, axis.right(), panel.bottom});
    draw_layers({canvas, view, theme, axis, panel}, panel, records.front());
    canvas.unclip();
    draw_value_axis(sheet, panel, axis, tags_of(sheet, panel, i == 0));
    draw_legend(sheet, legends[i], {axis.left(), panel.legend_top});
  }
  canvas.finish();
}

}  // namespace quor_host
