#include "painter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

namespace quor_host {
namespace {

constexpr uint32_t field_open = 7;
constexpr uint32_t field_high = 8;
constexpr uint32_t field_low = 9;
constexpr uint32_t field_close = 11;

const Color rising{0.80, 0.19, 0.19};
const Color falling{0.05, 0.60, 0.25};
const Color ink{0.20, 0.22, 0.26};

std::vector<double> dashes_of(const Record& record) {
  static const std::map<std::string, std::vector<double>> dashes = {
      {"DASHLINE", {8, 4}},
      {"DASH", {5, 4}},
      {"DOTLINE", {2, 3}},
      {"DOT", {1, 3}},
      {"DASHDOT", {6, 3, 1, 3}},
      {"POINTDOT", {1, 2}},
      {"DASHDOTDOT", {6, 3, 1, 3, 1, 3}}};
  const auto row = dashes.find(record.text("LineShapeStyle"));
  return row == dashes.end() ? std::vector<double>() : row->second;
}

double width_of(const Record& record) { return record.number("LineWidth", 1.0) + 0.4; }

std::string number_text(double value, int digits) {
  if (std::isnan(value)) return {};
  char text[400];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed,
                                 std::clamp(digits, 0, 6))
                       .ptr;
  return {text, end};
}

}  // namespace

const Painter::Row Painter::shapes[] = {
    {"PolylineShape", &Painter::draw_polyline}, {"StraightLineShape", &Painter::draw_straight_line},
    {"BarShape", &Painter::draw_stick},         {"CandleShape", &Painter::draw_candles},
    {"TextShape", &Painter::draw_text},         {"ImageShape", &Painter::draw_picture},
    {"RectShape", &Painter::draw_background},   {"PolygonShape", &Painter::draw_region},
    {"NoticeShape", &Painter::draw_signal},     {"FuturesTradeShape", &Painter::draw_signal},
};

void Painter::draw(const Panel& panel, const Record& record) {
  for (const Row& row : shapes) {
    if (record.is(row.shape_name)) (this->*row.draw)(panel, record);
  }
}

void Painter::candle(const Panel& panel, size_t row, const double (&prices)[4], Color color,
                     bool filled) {
  const auto [open, high, low, close] = prices;
  const double x = axis_.x(static_cast<double>(row));
  const double half = std::max(0.5, axis_.step() * 0.36);
  if (std::isfinite(high) && std::isfinite(low)) {
    canvas_.line({{x, panel.y(high)}, {x, panel.y(low)}}, color, 1.0);
  }
  if (!std::isfinite(open) || !std::isfinite(close)) return;
  const double top = panel.y(std::max(open, close));
  const double bottom = std::max(panel.y(std::min(open, close)), top + 1.0);
  canvas_.rectangle({x - half, top}, {x + half, bottom}, filled ? color : Color{1.0, 1.0, 1.0},
                    true);
  canvas_.rectangle({x - half, top}, {x + half, bottom}, color, false);
}

void Painter::draw_bars(const Panel& panel) {
  std::vector<Point> closes;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const double prices[4] = {view_.bar(field_open, row), view_.bar(field_high, row),
                              view_.bar(field_low, row), view_.bar(field_close, row)};
    if (std::isnan(prices[0])) {
      if (std::isfinite(prices[3])) {
        closes.push_back(at(panel, static_cast<double>(row), prices[3]));
      }
      continue;
    }
    const bool up = prices[3] >= prices[0];
    candle(panel, row, prices, up ? rising : falling, !up);
  }
  canvas_.line(closes, ink, 1.2);
}

void Painter::draw_polyline(const Panel& panel, const Record& record) {
  if (record.text("Style").find("Curve") != std::string::npos ||
      record.text("Style").find("StraightLine") != std::string::npos) {
    draw_figure(panel, record);
    return;
  }
  const bool both_colours = record.text("Style") == "ColorPolyline";
  const Color shown = resolve_brush(record.text("LineColor"));
  const Color other = resolve_brush(record.text("ConditionColor"));
  std::vector<Point> run;
  Color colour = shown;
  const auto finish_run = [&] {
    canvas_.line(run, colour, width_of(record), dashes_of(record));
    run.clear();
  };
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const double value = view_.value(record.column("Field1Id"), row);
    const bool visible = view_.shows(record.column("Field1VisibleId"), row);
    if (!std::isfinite(value) || (!visible && !both_colours)) {
      if (!record.flag("IsContinuousLine")) finish_run();
      continue;
    }
    const Point point = at(panel, static_cast<double>(row), value);
    run.push_back(point);
    if (both_colours) {
      colour = visible ? shown : other;
      finish_run();
      run.push_back(point);
    }
  }
  finish_run();
}

size_t Painter::newest_mark(const Record& record, const char* visible_key) const {
  for (size_t row = view_.row_count(); row-- > view_.first_row();) {
    if (view_.shows(record.column(visible_key), row)) return row;
  }
  return view_.row_count();
}

/// Analytical figures in a plain form: the line through the newest anchors, levels between them, or
/// the swing of the first two set off from the third.
void Painter::draw_figure(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("LineColor"));
  const std::string& style = record.text("Style");
  const size_t first = newest_mark(record, "Field1VisibleId");
  if (first == view_.row_count()) return;
  const double start = view_.value(record.column("Field1Id"), first);
  const auto level = [&](double value) {
    canvas_.line({at(panel, static_cast<double>(first), value), {axis_.right, panel.y(value)}},
                 color, width_of(record), dashes_of(record));
  };
  if (style.starts_with("Horizontal")) {
    level(start);
    return;
  }
  const size_t second = newest_mark(record, "Field2VisibleId");
  if (second == view_.row_count()) return;
  const double end = view_.value(record.column("Field2Id"), second);
  if (style.starts_with("Golden")) {
    for (const double share : {0.0, 0.382, 0.5, 0.618, 1.0}) level(start + (end - start) * share);
    return;
  }
  std::vector<Point> points = {at(panel, static_cast<double>(first), start),
                               at(panel, static_cast<double>(second), end)};
  if (style.starts_with("WaveRuler")) {
    const size_t third = newest_mark(record, "Field3VisibleId");
    if (third == view_.row_count()) return;
    const double base = view_.value(record.column("Field3Id"), third);
    points.push_back(at(panel, static_cast<double>(third), base));
    points.push_back({axis_.right, panel.y(base + (end - start) * record.number("Ratio", 1.0))});
  }
  canvas_.line(points, color, width_of(record), dashes_of(record));
}

void Painter::draw_slope(const Panel& panel, const Record& record) {
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    if (!view_.shows(record.column("Field1VisibleId"), row)) continue;
    const double price = view_.value(record.column("Field1Id"), row);
    const double length = view_.value(record.column("HorizontalOffset1FieldId"), row);
    if (!std::isfinite(price) || !std::isfinite(length)) continue;
    const auto start = static_cast<double>(row);
    const double end_price = price + record.number("Slope") * length;
    canvas_.line({at(panel, start, price), at(panel, start + length, end_price)},
                 resolve_brush(record.text("LineColor")), width_of(record), dashes_of(record));
  }
}

void Painter::draw_straight_line(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("LineColor"));
  const std::string& style = record.text("Style");
  if (style.starts_with("Slope")) {
    draw_slope(panel, record);
    return;
  }
  std::optional<Point> open;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const bool first = view_.shows(record.column("Field1VisibleId"), row);
    const auto place = static_cast<double>(row);
    if (style == "VertLine") {
      const double x = axis_.x(place);
      if (first) {
        canvas_.line({{x, panel.top}, {x, panel.bottom}}, color, width_of(record),
                     dashes_of(record));
      }
      continue;
    }
    // A second mark closes the line that a first one has opened.
    const auto second_mark = record.column("Field2VisibleId");
    const bool second = second_mark ? view_.shows(second_mark, row) : first;
    const auto offset = [&](const char* key) {
      const double bars = view_.value(record.column(key), row);
      return std::isfinite(bars) ? bars : 0.0;
    };
    const double start = view_.value(record.column("Field1Id"), row);
    const double end = view_.value(record.column("Field2Id"), row);
    if (first && std::isfinite(start)) {
      open = at(panel, place + offset("HorizontalOffset1FieldId"), start);
    }
    if (open && second && std::isfinite(end)) {
      canvas_.line({*open, at(panel, place + offset("HorizontalOffset2FieldId"), end)}, color,
                   width_of(record), dashes_of(record));
      open.reset();
    }
  }
}

void Painter::draw_stick(const Panel& panel, const Record& record) {
  const Color upper = resolve_brush(record.text("UpperShadowColor"));
  const Color lower = resolve_brush(record.text("LowerShadowColor"));
  const bool by_mark = record.flag("IsVolStick");
  const bool by_sign = record.flag("IsColorStick");
  const double width = record.number("LineWidth", -1.0);
  const double half = width > 0.0 ? width / 2 + 0.2 : std::max(0.5, axis_.step() * 0.36);
  const bool hollow = record.flag("IsFilled") && !by_mark && !by_sign && width < 0.0;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const bool mark = view_.shows(record.column("Field1VisibleId"), row);
    if (!mark && !by_mark) continue;
    const double from = view_.value(record.column("Field1Id"), row);
    const double to = record.column("Field2Id") ? view_.value(record.column("Field2Id"), row) : 0.0;
    if (!std::isfinite(from) || !std::isfinite(to)) continue;
    const bool up = by_mark ? mark : std::max(from, to) > 0.0;
    const double x = axis_.x(static_cast<double>(row));
    canvas_.rectangle({x - half, panel.y(from)}, {x + half, panel.y(to)}, up ? upper : lower,
                      !hollow);
  }
}

void Painter::draw_candles(const Panel& panel, const Record& record) {
  const bool coloured = record.flag("IsColorKLine");
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    if (coloured && !view_.shows(record.column("Field1VisibleId"), row)) continue;
    const double prices[4] = {
        view_.value(record.column("OpenField"), row), view_.value(record.column("HighField"), row),
        view_.value(record.column("LowField"), row), view_.value(record.column("CloseField"), row)};
    const bool up = prices[3] >= prices[0];
    const Color color = resolve_brush(record.text(coloured ? "FilledColor"
                                                  : up     ? "UpperShadowColor"
                                                           : "LowerShadowColor"));
    candle(panel, row, prices, color, coloured || !up);
  }
}

void Painter::draw_text(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("TextColor"));
  const auto number = record.column("NumberFieldId");
  const double size = std::clamp(record.number("FontSize", 14.0), 8.0, 30.0);
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const double price = view_.value(record.column("Field1Id"), row);
    if (!view_.shows(record.column("Field1VisibleId"), row) || !std::isfinite(price)) continue;
    const std::string text =
        number ? number_text(view_.value(number, row), static_cast<int>(record.number("Digit")))
               : record.text("Text");
    Point place = at(panel, static_cast<double>(row), price);
    place.x += record.number("HorizontalOffset");
    canvas_.text(place, text, color, size,
                 {record.number("HorizontalAlign") / 2, record.number("VerticalAlign") / 2});
  }
}

/// A picture's name in a frame; the pictures themselves are the client's.
void Painter::draw_picture(const Panel& panel, const Record& record) {
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    if (!view_.shows(record.column("Field1VisibleId"), row)) continue;
    const double price = view_.value(record.column("Field1Id"), row);
    const bool last_only = record.flag("IsLastCandle");
    if (!std::isfinite(price) && !(last_only && row + 1 == view_.row_count())) continue;
    const Point place = std::isfinite(price)
                            ? at(panel, static_cast<double>(row), price)
                            : Point{(axis_.left + axis_.right) / 2, (panel.top + panel.bottom) / 2};
    canvas_.rectangle({place.x - 9, place.y - 7}, {place.x + 9, place.y + 7}, ink, false);
    canvas_.text(place, record.text("Field1Text"), ink, 7.0, {0.5, 0.5});
  }
}

void Painter::draw_background(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("FilledColor")).with_alpha(0.13);
  const double half = axis_.step() / 2;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    if (!view_.shows(record.column("Field1VisibleId"), row)) continue;
    const double x = axis_.x(static_cast<double>(row));
    canvas_.rectangle({x - half, panel.top}, {x + half, panel.bottom}, color, true);
  }
}

void Painter::draw_region(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("FilledColor")).with_alpha(0.30);
  std::vector<Point> upper;
  std::vector<Point> lower;
  const auto finish_run = [&] {
    upper.insert(upper.end(), lower.rbegin(), lower.rend());
    if (upper.size() > 2) canvas_.area(upper, color);
    upper.clear();
    lower.clear();
  };
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const double first = view_.value(record.column("Field1Id"), row);
    const double second = view_.value(record.column("Field2Id"), row);
    if (!view_.shows(record.column("Field1VisibleId"), row) || !std::isfinite(first) ||
        !std::isfinite(second)) {
      finish_run();
      continue;
    }
    upper.push_back(at(panel, static_cast<double>(row), first));
    lower.push_back(at(panel, static_cast<double>(row), second));
  }
  finish_run();
}

/// A small triangle under the bars where a notice or trade signal holds.
void Painter::draw_signal(const Panel& panel, const Record& record) {
  const Color color = record.is("NoticeShape") ? Color{0.90, 0.60, 0.05} : Color{0.25, 0.30, 0.85};
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    if (view_.value(record.column("Field1Id"), row) != 1.0) continue;
    const double low = view_.bar(field_low, row);
    const double y = std::isfinite(low) ? panel.y(low) + 6 : panel.bottom - 10;
    const double x = axis_.x(static_cast<double>(row));
    canvas_.area({{x, y}, {x - 4, y + 8}, {x + 4, y + 8}}, color);
  }
}

}  // namespace quor_host
