// Draws bars and records into a panel.
#pragma once

#include <algorithm>

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
  double x(size_t row) const {
    return left + (static_cast<double>(row) - static_cast<double>(first_row) + 0.5) * step();
  }
};

/// Draws into one panel.
class Painter {
 public:
  Painter(Canvas& canvas, const View& view, const TimeAxis& axis, const Panel& panel)
      : canvas_(canvas), view_(view), axis_(axis), panel_(panel) {}

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
  void draw_candles(const Record& record);
  void draw_text(const Record& record);
  void draw_picture(const Record& record);
  void draw_background(const Record& record);
  void draw_region(const Record& record);
  void draw_signal(const Record& record);

  /// A rectangle around a bar, seen even if both ends are at one place.
  void block(size_t row, double half, double from, double to, Color color, bool filled);
  /// The line through two points, as far as it is in sight; on beyond the right one with bit 1 of
  /// the record's expansion, beyond the left one with bit 2.
  void segment(Point from, Point to, int expansion, const Stroke& stroke);
  /// The newest point that a mark of an anchor shows, in sight or not.
  std::optional<Point> anchor(const Record& record, const std::string& field);
  /// Writes a text within the panel, over or under texts that are there already; nowhere if there
  /// is no room.
  void label(Point at, const std::string& text, Color color, double size, Point anchor);

  double x(size_t row) const { return axis_.x(row); }
  Point at(size_t row, double value) const { return {x(row), panel_.y(value)}; }
  /// The value that a key of the record names, at its place.
  Point at(size_t row, const Record& record, const char* key) const {
    return at(row, view_.value(record.column(key), row));
  }
  double half_bar() const { return std::max(0.5, axis_.step() * 0.36); }

  Canvas& canvas_;
  const View& view_;
  TimeAxis axis_;
  const Panel& panel_;
  std::vector<std::pair<Point, Point>> labels_;  ///< upper left corners and extents
};

}  // namespace quor_host
