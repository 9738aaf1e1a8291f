#include "painter.h"

#include <algorithm>
#include <cmath>

namespace quor_host {

const Painter::Row Painter::rows[] = {
    {"PolylineShape", "Curve", &Painter::draw_figure},
    {"PolylineShape", "StraightLine", &Painter::draw_figure},
    {"PolylineShape", "", &Painter::draw_polyline},
    {"StraightLineShape", "Vert", &Painter::draw_upright_lines},
    {"StraightLineShape", "Slope", &Painter::draw_slopes},
    {"StraightLineShape", "", &Painter::draw_pairs},
    {"BarShape", "", &Painter::draw_sticks},
    {"VolumeShape", "", &Painter::draw_volume},
    {"CandleShape", "", &Painter::draw_candles},
    {"TextShape", "", &Painter::draw_text},
    {"ImageShape", "", &Painter::draw_picture},
    {"RectShape", "", &Painter::draw_background},
    {"PolygonShape", "", &Painter::draw_region},
    {"NoticeShape", "", &Painter::draw_notice},
    {"FuturesTradeShape", "", &Painter::draw_trade},
    {"SoundShape", "", &Painter::draw_sound},
};

Painter::Painter(Canvas& canvas, const View& view, const Theme& theme, const TimeAxis& axis,
                 const Panel& panel)
    : canvas_(canvas),
      view_(view),
      theme_(theme),
      axis_(axis),
      panel_(panel),
      placement_({axis.left(), panel.top, axis.right(), panel.bottom}) {}

void Painter::draw(const Record& record) {
  for (const auto& [shape_name, style, draw] : rows) {
    if (record.is(shape_name) && record.text("Style").find(style) != std::string::npos) {
      return (this->*draw)(record);
    }
  }
}

Box Painter::bar_box(double x, double width, double from, double to) {
  const double top = std::round(std::min(from, to));
  return {x - width / 2, top, x + width / 2, std::max(std::round(std::max(from, to)), top + 1.0)};
}

}  // namespace quor_host
