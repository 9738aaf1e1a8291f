// Draws bars and records into a panel.
#pragma once

#include <optional>
#include <string>

#include "../panes/panels.h"
#include "../panes/theme.h"
#include "canvas.h"
#include "placement.h"
#include "time_axis.h"

namespace quor_host {

/// How a trade signal looks: buying points up from below the bar, selling down from above it,
/// closing all is a square above.
struct TradeSign {
  std::string text;
  Color color;
  bool points_up = false;
  bool is_square = false;
};

/// Draws into one panel.
class Painter {
 public:
  Painter(Canvas& canvas, const View& view, const Theme& theme, const TimeAxis& axis,
          const Panel& panel);

  /// Keeps texts and signs off the bars of a record, beside which they stand from now on.
  void keep_clear(const Record& bars);
  void draw(const Record& record);

 private:
  struct Row {
    const char* shape_name;
    const char* style;  ///< a part of it; the first row that fits counts
    void (Painter::*draw)(const Record&);
  };
  static const Row rows[];

  void draw_polyline(const Record& record);
  void draw_figure(const Record& record);
  void draw_upright_lines(const Record& record);
  void draw_slopes(const Record& record);
  void draw_pairs(const Record& record);
  void draw_sticks(const Record& record);
  void draw_volume(const Record& record);
  void draw_candles(const Record& record);
  void draw_text(const Record& record);
  void draw_picture(const Record& record);
  void draw_background(const Record& record);
  void draw_region(const Record& record);
  void draw_notice(const Record& record);
  void draw_sound(const Record& record);
  void draw_trade(const Record& record);
  void draw_sign(const TradeSign& sign, double x, const Box& bar);

  void keep_clear_of_line();
  /// The box of a bar in whole pixels, at least one high.
  static Box bar_box(double x, double width, double from, double to);
  /// The line through two points, as far as it is in sight; on beyond the right one with bit 1 of
  /// the record's expansion, beyond the left one with bit 2.
  void segment(Point from, Point to, int expansion, const Stroke& stroke);
  Stroke stroke_of(const Record& record) const;
  double widest_line() const;
  /// The newest point that a mark of an anchor shows, in sight or not.
  std::optional<Point> anchor(const Record& record, const std::string& field);

  /// The bar of a row, from its high to its low; nothing in a panel without bars.
  std::optional<Box> bar_at(size_t row) const;
  /// The dots of a line: neither moved nor left out.
  void draw_dots(const Record& record, bool filled);
  /// Writes a text near a point of a row, beside the bar and other texts; nowhere if there is no
  /// room. The anchor is that of `Canvas::text`.
  void label(size_t row, Point at, Point anchor, const std::string& text,
             const Lettering& lettering, bool framed);
  /// A line from a point to a text that stands far from it.
  void lead(Point from, const Box& to, Color color);

  double x(size_t row) const { return axis_.x(row); }
  Point at(size_t row, double value) const { return {x(row), panel_.y(value)}; }

  Canvas& canvas_;
  const View& view_;
  const Theme& theme_;
  const TimeAxis& axis_;
  const Panel& panel_;
  Placement placement_;
  Series high_;  ///< of the bars to keep clear of
  Series low_;
};

}  // namespace quor_host
