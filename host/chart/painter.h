// Draws bars and records into a panel.
#pragma once

#include "canvas.h"
#include "panels.h"

namespace quor_host {

/// Where rows lie between the left and the right edge of the panels. Some room is left behind the
/// last one, for texts and for lines that go on.
struct TimeAxis {
  double left = 0.0;
  double right = 0.0;
  size_t first_row = 0;
  size_t rows = 1;

  double step() const { return (right - left - 45.0) / static_cast<double>(rows); }
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
  void draw_pairs(const Panel& panel, const Record& record);
  void draw_slopes(const Panel& panel, const Record& record);
  void draw_bar(const Panel& panel, const Record& record);
  void draw_sticks(const Panel& panel, const Record& record);
  void draw_columns(const Panel& panel, const Record& record);
  void draw_candles(const Panel& panel, const Record& record);
  void draw_text(const Panel& panel, const Record& record);
  void draw_picture(const Panel& panel, const Record& record);
  void draw_background(const Panel& panel, const Record& record);
  void draw_region(const Panel& panel, const Record& record);
  void draw_signal(const Panel& panel, const Record& record);

  enum class Form { hollow, filled, american };
  void candle(const Panel& panel, size_t row, const double (&prices)[4], Color color, Form form);
  /// The line through two points, as far as it is in sight; on beyond the right one with bit 1 of
  /// `expand`, beyond the left one with bit 2.
  void segment(Point from, Point to, int expand, const Stroke& stroke);
  /// The newest point that a mark of an anchor shows, in sight or not.
  std::optional<Point> anchor(const Panel& panel, const Record& record, const std::string& field);
  /// Writes a text within the panel, and over or under texts that are there already; nowhere if
  /// there is no room.
  void label(const Panel& panel, Point at, const std::string& text, Color color, double size,
             Anchor anchor);

  double x(size_t row) const { return axis_.x(static_cast<double>(row)); }
  Point at(const Panel& panel, size_t row, double value) const { return {x(row), panel.y(value)}; }
  double half_bar() const;

  struct Box {
    Point corner;
    Point extent;
  };
  bool is_free(const Box& box) const;

  Canvas& canvas_;
  const View& view_;
  TimeAxis axis_;
  std::vector<Box> labels_;
};

}  // namespace quor_host
