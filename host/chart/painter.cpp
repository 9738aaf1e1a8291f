#include "painter.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace quor_host {
namespace {

const Color rising{0.80, 0.19, 0.19};
const Color falling{0.05, 0.60, 0.25};
const Color ink{0.20, 0.22, 0.26};
const Color white{1.0, 1.0, 1.0};

std::string number_text(double value, int digits) {
  if (std::isnan(value)) return {};
  char text[400];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, digits).ptr;
  return {text, end};
}

bool is_single_letter(const std::string& text) {
  const auto begins_letter = [](char byte) { return (byte & 0xC0) != 0x80; };
  return std::ranges::count_if(text, begins_letter) < 2;
}

}  // namespace

const Painter::Row Painter::shapes[] = {
    {"PolylineShape", &Painter::draw_polyline}, {"StraightLineShape", &Painter::draw_straight_line},
    {"BarShape", &Painter::draw_bar},           {"CandleShape", &Painter::draw_candles},
    {"TextShape", &Painter::draw_text},         {"ImageShape", &Painter::draw_picture},
    {"RectShape", &Painter::draw_background},   {"PolygonShape", &Painter::draw_region},
    {"NoticeShape", &Painter::draw_signal},     {"FuturesTradeShape", &Painter::draw_signal},
};

void Painter::draw(const Panel& panel, const Record& record) {
  for (const Row& row : shapes) {
    if (record.is(row.shape_name)) (this->*row.draw)(panel, record);
  }
}

double Painter::half_bar() const { return std::max(0.5, axis_.step() * 0.36); }

void Painter::candle(const Panel& panel, size_t row, const double (&prices)[4], Color color,
                     Form form) {
  const auto [open, high, low, close] = prices;
  const double middle = x(row);
  const double left = middle - half_bar();
  const double right = middle + half_bar();
  canvas_.line({{middle, panel.y(high)}, {middle, panel.y(low)}}, {color});
  if (form == Form::american) {
    canvas_.line({{left, panel.y(open)}, {middle, panel.y(open)}}, {color});
    canvas_.line({{middle, panel.y(close)}, {right, panel.y(close)}}, {color});
    return;
  }
  const double top = panel.y(std::max(open, close));
  const double bottom = std::max(panel.y(std::min(open, close)), top + 1.0);
  canvas_.rectangle({left, top}, {right, bottom}, form == Form::filled ? color : white, true);
  canvas_.rectangle({left, top}, {right, bottom}, color, false);
}

void Painter::draw_bars(const Panel& panel) {
  std::vector<Point> closes;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const double prices[4] = {view_.bar(field_open, row), view_.bar(field_high, row),
                              view_.bar(field_low, row), view_.bar(field_close, row)};
    if (std::ranges::none_of(prices, [](double price) { return std::isnan(price); })) {
      const bool up = prices[3] >= prices[0];
      candle(panel, row, prices, up ? rising : falling, up ? Form::hollow : Form::filled);
    } else if (!std::isnan(prices[3])) {
      closes.push_back(at(panel, row, prices[3]));
    }
  }
  canvas_.line(closes, {ink, 1.2});
}

void Painter::draw_candles(const Panel& panel, const Record& record) {
  const bool coloured = record.flag("IsColorKLine");
  for (const size_t row : view_.rows(record)) {
    const double prices[4] = {
        view_.value(record.column("OpenField"), row), view_.value(record.column("HighField"), row),
        view_.value(record.column("LowField"), row), view_.value(record.column("CloseField"), row)};
    const bool hollow = coloured ? record.flag("IsFilled") : prices[3] > prices[0];
    const char* key = coloured                 ? "FilledColor"
                      : prices[3] > prices[0]  ? "UpperShadowColor"
                      : prices[3] == prices[0] ? "EqualShadowColor"
                                               : "LowerShadowColor";
    candle(panel, row, prices, resolve_brush(record.text(key)),
           record.text("Style") == "American" ? Form::american
           : hollow                           ? Form::hollow
                                              : Form::filled);
  }
}

void Painter::draw_bar(const Panel& panel, const Record& record) {
  if (record.text("Style") == "DoubleRect") {
    draw_columns(panel, record);
  } else {
    draw_sticks(panel, record);
  }
}

/// `IsFilled` asks for the outline only, except from sticks of two colours, which always have it.
void Painter::draw_sticks(const Panel& panel, const Record& record) {
  const Color upper = resolve_brush(record.text("UpperShadowColor"));
  const Color lower = resolve_brush(record.text("LowerShadowColor"));
  const bool by_mark = record.flag("IsVolStick");
  const bool by_sign = record.flag("IsColorStick");
  const double width = record.number("LineWidth", -1.0);
  const double half = width > 0.0 ? width / 2 + 0.2 : half_bar();
  const bool hollow = record.flag("IsFilled") && !by_mark && !by_sign && half > 1.0;
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const bool mark = view_.shows(record.column("Field1VisibleId"), row);
    if (!mark && !by_mark) continue;
    const double from = view_.value(record.column("Field1Id"), row);
    const double to = view_.value(record.column("Field2Id"), row);
    const bool up = by_mark ? mark : std::max(from, to) > 0.0;
    const double top = panel.y(std::max(from, to));
    const double bottom = std::max(panel.y(std::min(from, to)), top + 1.0);
    canvas_.rectangle({x(row) - half, top}, {x(row) + half, bottom}, up ? upper : lower, !hollow);
  }
}

/// Columns from 0: full ones for the first mark, outlines for the second, side by side for both.
void Painter::draw_columns(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("UpperShadowColor"));
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const bool first = view_.shows(record.column("Field1VisibleId"), row);
    const bool second = view_.shows(record.column("Field2VisibleId"), row);
    const double end = panel.y(view_.value(record.column("Field1Id"), row));
    const double left = x(row) - half_bar();
    const double right = x(row) + half_bar();
    const double base = panel.y(0.0);
    if (first) canvas_.rectangle({left, end}, {second ? x(row) : right, base}, color, true);
    if (second) canvas_.rectangle({first ? x(row) : left, end}, {right, base}, color, false);
  }
}

bool Painter::is_free(const Box& box) const {
  const auto overlaps = [&box](const Box& other) {
    return box.corner.x < other.corner.x + other.extent.x &&
           other.corner.x < box.corner.x + box.extent.x &&
           box.corner.y < other.corner.y + other.extent.y &&
           other.corner.y < box.corner.y + box.extent.y;
  };
  return std::ranges::none_of(labels_, overlaps);
}

void Painter::label(const Panel& panel, Point at, const std::string& text, Color color, double size,
                    Anchor anchor) {
  const Point extent = canvas_.extent(text, size);
  const auto fit = [](double place, double low, double high) {
    return std::max(low, std::min(place, high));
  };
  Box box{{fit(at.x - anchor.x * extent.x, axis_.left, axis_.right - extent.x),
           fit(at.y - anchor.y * extent.y, panel.top, panel.bottom - extent.y)},
          extent};
  // Texts that hang below their point make way downwards. A sign may touch other signs, and one in
  // the middle of its point stays there, as the dots of a line do.
  const double way = anchor.y < 0.5 ? extent.y : -extent.y;
  const bool is_sign = is_single_letter(text);
  const bool is_fixed = is_sign && anchor.y == 0.5;
  for (int tries = 0; tries < 4; ++tries, box.corner.y += way) {
    if (!is_fixed && !is_free(box)) continue;
    canvas_.text(box.corner, text, color, size, {0.0, 0.0});
    if (!is_sign) labels_.push_back(box);
    return;
  }
}

void Painter::draw_text(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("TextColor"));
  const auto number = record.column("NumberFieldId");
  const auto digits = static_cast<int>(std::clamp(record.number("Digit"), 0.0, 6.0));
  const double size = std::clamp(record.number("FontSize", 14.0), 8.0, 30.0);
  const auto share = [&record](const char* key) {
    return std::clamp(record.number(key, 1.0) / 2, 0.0, 1.0);
  };
  for (const size_t row : view_.rows(record)) {
    Point place = at(panel, row, view_.value(record.column("Field1Id"), row));
    if (!std::isfinite(place.y)) continue;
    place.x += record.number("HorizontalOffset");
    place.y -= record.number("VerticalOffset");
    const std::string text =
        number ? number_text(view_.value(number, row), digits) : record.text("Text");
    label(panel, place, text, color, size, {share("HorizontalAlign"), share("VerticalAlign")});
  }
}

/// A picture's name in a frame, since the pictures are the client's; one without a price lies
/// behind all of the panel.
void Painter::draw_picture(const Panel& panel, const Record& record) {
  const std::string& name = record.text("Field1Text");
  for (const size_t row : view_.rows(record)) {
    const bool behind = record.flag("IsLastCandle");
    const double size = behind ? 40.0 : 9.0;
    const Color color = ink.with_alpha(behind ? 0.15 : 1.0);
    const Point extent = canvas_.extent(name, size);
    const Point place = behind ? Point{(axis_.left + axis_.right) / 2, panel.bottom - extent.y}
                               : at(panel, row, view_.value(record.column("Field1Id"), row));
    const Point half{extent.x / 2 + 4, extent.y / 2 + 1};
    const Point corner{place.x - half.x, place.y - half.y};
    canvas_.rectangle(corner, {place.x + half.x, place.y + half.y}, color, false);
    if (!behind) labels_.push_back({corner, {2 * half.x, 2 * half.y}});
    canvas_.text(place, name, color, size, {0.5, 0.5});
  }
}

/// Behind marked bars; from edge to edge for a record that looks at the last bar only.
void Painter::draw_background(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("FilledColor")).with_alpha(0.13);
  const std::string& second = record.text("GradientColor");
  const Color end = second.empty() ? color : resolve_brush(second).with_alpha(0.13);
  const bool wide = record.flag("IsLastCandle");
  const double half = axis_.step() / 2;
  for (const size_t row : view_.rows(record)) {
    canvas_.gradient({wide ? axis_.left : x(row) - half, panel.top},
                     {wide ? axis_.right : x(row) + half, panel.bottom}, color, end,
                     record.flag("GradientDirection"));
  }
}

void Painter::draw_region(const Panel& panel, const Record& record) {
  const Color color = resolve_brush(record.text("FilledColor")).with_alpha(0.30);
  std::vector<Point> upper;
  std::vector<Point> lower;
  const auto finish_run = [&] {
    upper.insert(upper.end(), lower.rbegin(), lower.rend());
    canvas_.area(upper, color);
    upper.clear();
    lower.clear();
  };
  for (size_t row = view_.first_row(); row < view_.row_count(); ++row) {
    const double first = view_.value(record.column("Field1Id"), row);
    const double second = view_.value(record.column("Field2Id"), row);
    if (!view_.shows(record.column("Field1VisibleId"), row) || std::isnan(first + second)) {
      finish_run();
      continue;
    }
    upper.push_back(at(panel, row, first));
    lower.push_back(at(panel, row, second));
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
    canvas_.area({{x(row), y}, {x(row) - 4, y + 8}, {x(row) + 4, y + 8}}, color);
  }
}

}  // namespace quor_host
