#include "painter.h"

#include <cmath>

namespace quor_host {
namespace {

const Color white{1.0, 1.0, 1.0};

}  // namespace

const Painter::Row Painter::rows[] = {
    {"PolylineShape", "Curve", &Painter::draw_figure},
    {"PolylineShape", "StraightLine", &Painter::draw_figure},
    {"PolylineShape", "", &Painter::draw_polyline},
    {"StraightLineShape", "Vert", &Painter::draw_upright_lines},
    {"StraightLineShape", "Slope", &Painter::draw_slopes},
    {"StraightLineShape", "", &Painter::draw_pairs},
    {"BarShape", "", &Painter::draw_sticks},
    {"CandleShape", "", &Painter::draw_candles},
    {"TextShape", "", &Painter::draw_text},
    {"ImageShape", "", &Painter::draw_picture},
    {"RectShape", "", &Painter::draw_background},
    {"PolygonShape", "", &Painter::draw_region},
    {"NoticeShape", "", &Painter::draw_signal},
    {"FuturesTradeShape", "", &Painter::draw_signal},
};

void Painter::draw(const Record& record) {
  for (const auto& [shape_name, style, draw] : rows) {
    if (record.is(shape_name) && record.text("Style").find(style) != std::string::npos) {
      return (this->*draw)(record);
    }
  }
}

void Painter::block(size_t row, double half, double from, double to, Color color, bool filled) {
  if (std::isnan(from + to)) return;
  const double top = std::min(from, to);
  const double bottom = std::max(std::max(from, to), top + 1.0);
  canvas_.rectangle({x(row) - half, top}, {x(row) + half, bottom}, color, filled);
}

void Painter::draw_candles(const Record& record) {
  const bool coloured = record.flag("IsColorKLine");
  const bool american = record.text("Style") == "American";
  for (const size_t row : view_.rows(record)) {
    const Point open = at(row, record, "OpenField");
    const Point close = at(row, record, "CloseField");
    const bool rises = close.y < open.y;
    const Color color = resolve_brush(record.text(coloured            ? "FilledColor"
                                                  : rises             ? "UpperShadowColor"
                                                  : close.y == open.y ? "EqualShadowColor"
                                                                      : "LowerShadowColor"));
    canvas_.line({at(row, record, "HighField"), at(row, record, "LowField")}, {color});
    if (american) {
      canvas_.line({{open.x - half_bar(), open.y}, open}, {color});
      canvas_.line({close, {close.x + half_bar(), close.y}}, {color});
      continue;
    }
    const bool hollow = coloured ? record.flag("IsFilled") : rises;
    block(row, half_bar(), open.y, close.y, hollow ? white : color, true);
    block(row, half_bar(), open.y, close.y, color, false);
  }
}

/// `IsFilled` asks for the outline only, except from sticks of two colours, which always have it.
/// Columns stand on 0, slim and full ones for the first mark, wide outlines for the second.
void Painter::draw_sticks(const Record& record) {
  const Color upper = resolve_brush(record.text("UpperShadowColor"));
  const Color lower = resolve_brush(record.text("LowerShadowColor"));
  const bool by_mark = record.flag("IsVolStick");
  const bool by_sign = record.flag("IsColorStick");
  const bool columns = record.text("Style") == "DoubleRect";
  const double width = record.number("LineWidth", -1.0);
  const double half = width > 0.0 ? width / 2 + 0.2 : half_bar() * (columns ? 0.5 : 1.0);
  const bool hollow = record.flag("IsFilled") && !by_mark && !by_sign && half > 1.0;
  const double zero = panel_.y(0.0);
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const bool mark = view_.shows(record.column("Field1VisibleId"), row);
    const double from = at(row, record, "Field1Id").y;
    const double to = columns ? zero : at(row, record, "Field2Id").y;
    const bool up = by_mark ? mark : std::min(from, to) < zero;
    if (mark || by_mark) block(row, half, from, to, up ? upper : lower, !hollow);
    if (columns && view_.shows(record.column("Field2VisibleId"), row)) {
      block(row, half_bar(), from, to, lower, false);
    }
  }
}

void Painter::label(Point at, const std::string& text, Color color, double size, Point anchor) {
  const Point extent = canvas_.extent(text, size);
  Point corner{std::min(at.x - anchor.x * extent.x, axis_.right - extent.x),
               std::min(at.y - anchor.y * extent.y, panel_.bottom - extent.y)};
  corner = {std::max(corner.x, axis_.left), std::max(corner.y, panel_.top)};
  const auto overlaps = [&](const auto& label) {
    const auto& [other, reach] = label;
    return corner.x < other.x + reach.x && other.x < corner.x + extent.x &&
           corner.y < other.y + reach.y && other.y < corner.y + extent.y;
  };
  // Texts that hang below their point make way downwards. A sign may touch other signs, and one in
  // the middle of its point stays there, as the dots of a line do.
  const double way = anchor.y < 0.5 ? extent.y : -extent.y;
  const auto begins_letter = [](char byte) { return (byte & 0xC0) != 0x80; };
  const bool is_sign = std::ranges::count_if(text, begins_letter) < 2;
  const bool is_fixed = is_sign && anchor.y == 0.5;
  for (int tries = 0; tries < 4; ++tries, corner.y += way) {
    if (!is_fixed && std::ranges::any_of(labels_, overlaps)) continue;
    canvas_.text(corner, text, color, size, {0.0, 0.0});
    if (!is_sign) labels_.emplace_back(corner, extent);
    return;
  }
}

void Painter::draw_text(const Record& record) {
  const Color color = resolve_brush(record.text("TextColor"));
  const auto number = record.column("NumberFieldId");
  const auto digits = static_cast<int>(std::clamp(record.number("Digit"), 0.0, 6.0));
  const double size = std::clamp(record.number("FontSize", 14.0), 8.0, 30.0);
  const auto share = [&record](const char* key) {
    return std::clamp(record.number(key, 1.0) / 2, 0.0, 1.0);
  };
  for (const size_t row : view_.rows(record)) {
    Point place = at(row, record, "Field1Id");
    const double value = number ? view_.value(number, row) : 0.0;
    if (std::isnan(place.y + value)) continue;
    place.x += record.number("HorizontalOffset");
    place.y -= record.number("VerticalOffset");
    const std::string text = number ? number_text(value, digits) : record.text("Text");
    label(place, text, color, size, {share("HorizontalAlign"), share("VerticalAlign")});
  }
}

/// A picture's name in a frame, since the pictures are the client's. One that looks at the last bar
/// only lies behind all others.
void Painter::draw_picture(const Record& record) {
  const std::string name = record.text("Field1Text");
  for (const size_t row : view_.rows(record)) {
    const bool behind = record.flag("IsLastCandle");
    const double size = behind ? 40.0 : 9.0;
    const Color color{0.2, 0.2, 0.25, behind ? 0.15 : 1.0};
    const Point extent = canvas_.extent(name, size);
    const Point place = behind ? Point{(axis_.left + axis_.right) / 2, panel_.bottom - extent.y}
                               : at(row, record, "Field1Id");
    if (std::isnan(place.y)) continue;
    const Point corner{place.x - extent.x / 2 - 4, place.y - extent.y / 2};
    const Point frame{extent.x + 8, extent.y};
    canvas_.rectangle(corner, {corner.x + frame.x, corner.y + frame.y}, color, false);
    canvas_.text(place, name, color, size, {0.5, 0.5});
    labels_.emplace_back(corner, frame);
  }
}

/// Behind marked bars; from edge to edge for a record that looks at the last bar only.
void Painter::draw_background(const Record& record) {
  const Color color = resolve_brush(record.text("FilledColor"), 0.13);
  const std::string second = record.text("GradientColor");
  const Color end = second.empty() ? color : resolve_brush(second, 0.13);
  const bool wide = record.flag("IsLastCandle");
  const double half = axis_.step() / 2;
  for (const size_t row : view_.rows(record)) {
    canvas_.gradient({wide ? axis_.left : x(row) - half, panel_.top},
                     {wide ? axis_.right : x(row) + half, panel_.bottom}, color, end,
                     record.flag("GradientDirection"));
  }
}

void Painter::draw_region(const Record& record) {
  const Color color = resolve_brush(record.text("FilledColor"), 0.30);
  std::vector<Point> upper;
  std::vector<Point> lower;
  const auto finish_run = [&] {
    upper.insert(upper.end(), lower.rbegin(), lower.rend());
    canvas_.area(upper, color);
    upper.clear();
    lower.clear();
  };
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const Point first = at(row, record, "Field1Id");
    const Point second = at(row, record, "Field2Id");
    if (!view_.shows(record.column("Field1VisibleId"), row) || std::isnan(first.y + second.y)) {
      finish_run();
      continue;
    }
    upper.push_back(first);
    lower.push_back(second);
  }
  finish_run();
}

/// A small triangle at the foot of the panel where a notice or trade signal holds.
void Painter::draw_signal(const Record& record) {
  const Color color = record.is("NoticeShape") ? Color{0.90, 0.60, 0.05} : Color{0.25, 0.30, 0.85};
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    if (view_.value(record.column("Field1Id"), row) != 1.0) continue;
    const double y = panel_.bottom - 2;
    canvas_.area({{x(row), y - 8}, {x(row) - 4, y}, {x(row) + 4, y}}, color);
  }
}

}  // namespace quor_host
