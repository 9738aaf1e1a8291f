// Lines: through the values of all bars, between marked bars, and the analytical figures.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>

#include "../panes/measures.h"
#include "../panes/numbers.h"
#include "painter.h"

namespace quor_host {
namespace {

/// The points of one column of pixels become the first, the lowest, the highest and the last one.
std::vector<Point> condensed(const std::vector<Point>& points) {
  std::vector<Point> few;
  for (size_t begin = 0; begin < points.size();) {
    size_t end = begin;
    while (end < points.size() && points[end].x == points[begin].x) ++end;
    const auto column = std::span(points).subspan(begin, end - begin);
    const auto [low, high] = std::ranges::minmax_element(column, {}, &Point::y);
    if (low->y == high->y) {
      few.push_back(column.front());
    } else if (column.size() == 2) {
      few.insert(few.end(), column.begin(), column.end());
    } else {
      few.insert(few.end(), {column.front(), *low, *high, column.back()});
    }
    begin = end;
  }
  return few;
}

std::vector<double> lengths_of(const NamedDashes& dashes) {
  const auto* const end = std::ranges::find(dashes.lengths, 0.0);
  return {std::begin(dashes.lengths), end};
}

std::vector<double> dashes_of(const Record& record) {
  const std::string style = record.text("LineShapeStyle");
  const auto is_meant = [&style](const NamedDashes& dashes) { return style == dashes.name; };
  const auto* const row = std::ranges::find_if(named_dashes, is_meant);
  return row == std::end(named_dashes) ? std::vector<double>() : lengths_of(*row);
}

}  // namespace

Stroke Painter::stroke_of(const Record& record) const {
  const double width = record.number("LineWidth", 1.0) + line_ease;
  return {theme_.line(record.text("LineColor")), std::min(width, widest_line()), dashes_of(record)};
}

double Painter::widest_line() const {
  return axis_.slot_width() < narrow_slot ? broadest_narrow_line : broadest_line;
}

/// A line of one value lies from edge to edge, as a level to measure other lines by.
void Painter::draw_polyline(const Record& record) {
  Stroke stroke = stroke_of(record);
  const auto is_record = [&record](const Level& level) { return level.record == &record; };
  if (const auto level = std::ranges::find_if(panel_.levels, is_record);
      level != panel_.levels.end()) {
    const double y = std::round(panel_.y(level->value)) + 0.5;
    stroke.width -= line_ease;
    if (stroke.dashes.empty()) stroke.dashes = lengths_of(level_dashes);
    canvas_.line({{axis_.left(), y}, {axis_.right(), y}}, stroke);
    return;
  }
  const bool both_colours = record.text("Style") == "ColorPolyline";
  const Color shown_color = stroke.color;
  const Color other = theme_.line(record.text("ConditionColor"));
  const Series values = view_.series(record, "Field1Id");
  const Marks shown = view_.marks(record);
  std::vector<Point> run;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const bool breaks = std::isnan(values[row]) || (!shown[row] && !both_colours);
    if (breaks) {
      if (record.flag("IsContinuousLine")) continue;
      canvas_.line(condensed(run), stroke);
      run.clear();
      continue;
    }
    const Color color = both_colours && !shown[row] ? other : shown_color;
    if (!run.empty() && color != stroke.color) {
      if (run.size() > 1) canvas_.line(condensed(run), stroke);
      run.erase(run.begin(), run.end() - 1);
    }
    stroke.color = color;
    run.push_back(at(row, values[row]));
  }
  canvas_.line(condensed(run), stroke);
}

void Painter::segment(Point from, Point to, int expansion, const Stroke& stroke) {
  if (from.x > to.x) std::swap(from, to);
  const double slope = (to.y - from.y) / (to.x - from.x);
  if (!std::isfinite(slope)) {
    canvas_.line({from, to}, stroke);
    return;
  }
  const auto y = [&](double x) { return from.y + slope * (x - from.x); };
  double left = std::max(expansion & 2 ? axis_.left() : from.x, axis_.left());
  double right = std::min(expansion & 1 ? axis_.right() : to.x, axis_.right());
  if (slope != 0.0) {
    const auto [first, last] = std::minmax(
        {from.x + (panel_.top - from.y) / slope, from.x + (panel_.bottom - from.y) / slope});
    left = std::max(left, first);
    right = std::min(right, last);
  }
  if (left < right) canvas_.line({{left, y(left)}, {right, y(right)}}, stroke);
}

void Painter::draw_upright_lines(const Record& record) {
  for (const size_t row : axis_.one_per_slot(view_.rows(record))) {
    canvas_.line({{x(row), panel_.top}, {x(row), panel_.bottom}}, stroke_of(record));
  }
}

void Painter::draw_slopes(const Record& record) {
  const Stroke stroke = stroke_of(record);
  const auto expansion = static_cast<int>(record.number("IsExpand"));
  const Series prices = view_.series(record, "Field1Id");
  const Series lengths = view_.series(record, "HorizontalOffset1FieldId");
  for (const size_t row : axis_.one_per_slot(view_.rows(record))) {
    const Point start = at(row, prices[row]);
    const double length = lengths[row];
    const double rise = panel_.y(length * record.number("Slope")) - panel_.y(0.0);
    segment(start, {start.x + length * axis_.row_width(), start.y + rise}, expansion, stroke);
  }
}

/// From bars with the first mark to the next one with the second. A record with a single mark has
/// both ends at the bar, and so has one whose offsets set the ends of a bar with both marks apart;
/// without offsets such a bar ends one line and begins the next.
void Painter::draw_pairs(const Record& record) {
  const Stroke stroke = stroke_of(record);
  const auto expansion = static_cast<int>(record.number("IsExpand"));
  const bool has_second_mark = record.column("Field2VisibleId").has_value();
  const Marks first_mark = view_.marks(record);
  const Marks second_mark = view_.marks(record, "Field2VisibleId");
  const auto end_point = [&](const Series& prices, const Series& offsets, size_t row) -> Point {
    const double bars = offsets[row];
    return {x(row) + (std::isnan(bars) ? 0.0 : bars * axis_.row_width()), panel_.y(prices[row])};
  };
  const Series first = view_.series(record, "Field1Id");
  const Series second = view_.series(record, "Field2Id");
  const Series first_offset = view_.series(record, "HorizontalOffset1FieldId");
  const Series second_offset = view_.series(record, "HorizontalOffset2FieldId");
  std::optional<Point> open;
  for (size_t row = view_.first_row(record); row < view_.row_count(); ++row) {
    const Point start = end_point(first, first_offset, row);
    const Point end = end_point(second, second_offset, row);
    const bool begins = first_mark[row] && std::isfinite(start.y);
    const bool ends = has_second_mark ? second_mark[row] && std::isfinite(end.y) : begins;
    const bool is_whole = begins && ends && (!has_second_mark || start.x != end.x);
    if (is_whole || (ends && open)) {
      segment(is_whole ? start : *open, end, expansion, stroke);
    }
    if (ends) open.reset();
    if (begins) open = start;
  }
}

std::optional<Point> Painter::anchor(const Record& record, const std::string& field) {
  const auto value = record.column(field + "Id");
  const auto mark = record.column(field + "VisibleId");
  for (size_t row = view_.row_count(); value && row-- > 0;) {
    const Point point = at(row, view_.value(value, row));
    const bool shown = !mark || view_.value(mark, row) == 1.0;
    if (shown && std::isfinite(point.y)) return point;
  }
  return std::nullopt;
}

/// A plain form over the newest anchors. The ratio stretches the swing from the first anchor to the
/// second: the height of an angle line at the second anchor, of the levels, of the wave that is set
/// off from the third.
void Painter::draw_figure(const Record& record) {
  const std::string style = record.text("Style");
  const Stroke stroke = stroke_of(record);
  const auto first = anchor(record, "Field1");
  const Lettering small{theme_.text(record.text("LineColor")), 10.0, false, theme_.ground};
  const auto level = [&](double left, double y, const std::string& name) {
    if (y < panel_.top || y > panel_.bottom) return;
    canvas_.line({{left, y}, {axis_.right(), y}}, stroke);
    canvas_.text({axis_.right() - 3, y}, name, small, {1.0, 1.0});
  };
  if (first && style.starts_with("Horizontal")) level(first->x, first->y, "");
  const auto second = anchor(record, "Field2");
  if (!first || !second) return;
  const double swing = (second->y - first->y) * record.number("Ratio", 1.0);
  if (style.starts_with("Golden")) {
    for (const auto& [share, name] : golden_shares) {
      level(std::min(first->x, second->x), first->y + swing * share, name);
    }
  } else if (style.starts_with("Wave")) {
    const auto third = anchor(record, "Field3");
    if (!third) return;
    const double length = std::abs(second->x - first->x);
    canvas_.line({*first, *second, *third, {third->x + length, third->y + swing}}, stroke);
  } else {
    segment(*first, {second->x, first->y + swing}, 1, stroke);
  }
}

}  // namespace quor_host
