// Lines: through the values of all bars, between marked bars, and the analytical figures.
#include <cmath>
#include <map>

#include "painter.h"

namespace quor_host {
namespace {

Stroke stroke_of(const Record& record) {
  static const std::map<std::string, std::vector<double>> dashes = {
      {"DASHLINE", {8, 4}},
      {"DASH", {5, 4}},
      {"DOTLINE", {2, 3}},
      {"DOT", {1, 3}},
      {"DASHDOT", {6, 3, 1, 3}},
      {"POINTDOT", {1, 2}},
      {"DASHDOTDOT", {6, 3, 1, 3, 1, 3}}};
  const auto row = dashes.find(record.text("LineShapeStyle"));
  return {resolve_brush(record.text("LineColor")), record.number("LineWidth", 1.0) + 0.4,
          row == dashes.end() ? std::vector<double>() : row->second};
}

}  // namespace

void Painter::draw_polyline(const Record& record) {
  const bool both_colours = record.text("Style") == "ColorPolyline";
  const Color other = resolve_brush(record.text("ConditionColor"));
  const Stroke shown = stroke_of(record);
  Stroke stroke = shown;
  std::vector<Point> run;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const Point point = at(row, record, "Field1Id");
    const bool visible = view_.shows(record.column("Field1VisibleId"), row);
    const bool breaks = std::isnan(point.y) || (!visible && !both_colours);
    const bool recolours = !breaks && both_colours && !run.empty();
    if (recolours || (breaks && !record.flag("IsContinuousLine"))) {
      if (run.size() > 1 || breaks) canvas_.line(run, stroke);
      run.erase(run.begin(), breaks ? run.end() : run.end() - 1);
    }
    if (breaks) continue;
    stroke.color = visible ? shown.color : other;
    run.push_back(point);
  }
  canvas_.line(run, stroke);
}

void Painter::segment(Point from, Point to, int expansion, const Stroke& stroke) {
  if (from.x > to.x) std::swap(from, to);
  const double slope = (to.y - from.y) / (to.x - from.x);
  if (!std::isfinite(slope)) {
    canvas_.line({from, to}, stroke);
    return;
  }
  const auto y = [&](double x) { return from.y + slope * (x - from.x); };
  double left = std::max(expansion & 2 ? axis_.left : from.x, axis_.left);
  double right = std::min(expansion & 1 ? axis_.right : to.x, axis_.right);
  if (slope != 0.0) {
    const auto [first, last] = std::minmax(
        {from.x + (panel_.top - from.y) / slope, from.x + (panel_.bottom - from.y) / slope});
    left = std::max(left, first);
    right = std::min(right, last);
  }
  if (left < right) canvas_.line({{left, y(left)}, {right, y(right)}}, stroke);
}

void Painter::draw_upright_lines(const Record& record) {
  for (const size_t row : view_.rows(record)) {
    canvas_.line({{x(row), panel_.top}, {x(row), panel_.bottom}}, stroke_of(record));
  }
}

void Painter::draw_slopes(const Record& record) {
  const Stroke stroke = stroke_of(record);
  const auto expansion = static_cast<int>(record.number("IsExpand"));
  for (const size_t row : view_.rows(record)) {
    const Point start = at(row, record, "Field1Id");
    const double length = view_.value(record.column("HorizontalOffset1FieldId"), row);
    const double rise = panel_.y(length * record.number("Slope")) - panel_.y(0.0);
    segment(start, {start.x + length * axis_.step(), start.y + rise}, expansion, stroke);
  }
}

/// From bars with the first mark to the next one with the second. A record with a single mark has
/// both ends at the bar, and so has one whose offsets set the ends of a bar with both marks apart;
/// without offsets such a bar ends one line and begins the next.
void Painter::draw_pairs(const Record& record) {
  const Stroke stroke = stroke_of(record);
  const auto expansion = static_cast<int>(record.number("IsExpand"));
  const auto second_mark = record.column("Field2VisibleId");
  const auto end_point = [&](const char* value, const char* offset, size_t row) -> Point {
    const double bars = view_.value(record.column(offset), row);
    return {x(row) + (std::isnan(bars) ? 0.0 : bars * axis_.step()),
            panel_.y(view_.value(record.column(value), row))};
  };
  std::optional<Point> open;
  for (size_t row = view_.first_row(record); row < view_.row_count(); ++row) {
    const Point start = end_point("Field1Id", "HorizontalOffset1FieldId", row);
    const Point end = end_point("Field2Id", "HorizontalOffset2FieldId", row);
    const bool begins =
        view_.shows(record.column("Field1VisibleId"), row) && std::isfinite(start.y);
    const bool ends = second_mark ? view_.shows(second_mark, row) && std::isfinite(end.y) : begins;
    const bool is_whole = begins && ends && (!second_mark || start.x != end.x);
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
    if (view_.shows(mark, row) && std::isfinite(point.y)) return point;
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
  const auto level = [&](double left, double y, const std::string& name) {
    if (y < panel_.top || y > panel_.bottom) return;
    canvas_.line({{left, y}, {axis_.right, y}}, stroke);
    canvas_.text({axis_.right - 3, y}, name, stroke.color, 9.0, {1.0, 1.0});
  };
  if (first && style.starts_with("Horizontal")) level(first->x, first->y, "");
  const auto second = anchor(record, "Field2");
  if (!first || !second) return;
  const double swing = (second->y - first->y) * record.number("Ratio", 1.0);
  if (style.starts_with("Golden")) {
    for (const auto& [share, name] :
         {std::pair{0.0, "0"}, {0.382, "38.2%"}, {0.5, "50%"}, {0.618, "61.8%"}, {1.0, "100%"}}) {
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
