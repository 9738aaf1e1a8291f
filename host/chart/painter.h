// Draws bars and records into a panel.
#pragma once

#include "canvas.h"
#include "panels.h"

namespace quor_host {

/// Where rows lie between the left and the right edge of the panels.
struct TimeAxis {
  double left = 0.0;
  double right = 0.0;
  size_t first_row = 0;
  size_t rows = 1;

  double step() const { return (right - left) / static_cast<double>(rows); }
  double x(double row) const {
    return left + (row - static_cast<double>(first_row) + 0.5) * step();
  }
};

class Painter {
 public:
  Painter(Canvas& canvas, const View& view, const TimeAxis& axis)
      : canvas_(canvas), view_(view), axis_(axis) {}

  /// The bars of the file as candles, or the close as a line where open, high or low is missing.
  void draw_bars(const Panel& panel);
  void draw(const Panel& panel, const Record& record);

 private:
  using Draw = void (Painter::*)(const Panel&, const Record&);
  struct Row {
    const char* shape_name;
    Draw draw;
  };
  static const Row shapes[];

  void draw_polyline(const Panel& panel, const Record& record);
  void draw_figure(const Panel& panel, const Record& record);
  void draw_straight_line(const Panel& panel, const Record& record);
  void draw_slope(const Panel& panel, const Record& record);
  void draw_stick(const Panel& panel, const Record& record);
  void draw_candles(const Panel& panel, const Record& record);
  void draw_text(const Panel& panel, const Record& record);
  void draw_picture(const Panel& panel, const Record& record);
  void draw_background(const Panel& panel, const Record& record);
  void draw_region(const Panel& panel, const Record& record);
  void draw_signal(const Panel& panel, const Record& record);

  void candle(const Panel& panel, size_t row, const double (&prices)[4], Color color, bool filled);
  Point at(const Panel& panel, double row, double value) const {
    return {axis_.x(row), panel.y(value)};
  }
  /// The newest row in sight where an anchor of a figure shows; the row count if there is none.
  size_t newest_mark(const Record& record, const char* visible_key) const;

  Canvas& canvas_;
  const View& view_;
  TimeAxis axis_;
};

}  // namespace quor_host
