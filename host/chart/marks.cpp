// What stands beside bars: texts, numbers and signs, pictures, notices and trade signals.
#include <algorithm>
#include <cmath>

#include "../panes/measures.h"
#include "../panes/numbers.h"
#include "../panes/trade_words.h"
#include "painter.h"

namespace quor_host {
namespace {

/// The rows in sight at which a notice, a signal or a sound holds.
std::vector<size_t> rows_that_hold(const View& view, const Record& record,
                                   const char* key = "Field1Id") {
  const Series holds = view.series(record, key);
  std::vector<size_t> found;
  for (size_t row = view.first_row(); row < view.row_count(); ++row) {
    if (holds[row] == 1.0) found.push_back(row);
  }
  return found;
}

Box box_around(Point at, Point extent, Point anchor) {
  const double left = at.x - anchor.x * extent.x;
  const double top = at.y - anchor.y * extent.y;
  return {left, top, left + extent.x, top + extent.y};
}

}  // namespace

std::optional<Box> Painter::bar_at(size_t row) const {
  if (std::isnan(high_[row] + low_[row])) return std::nullopt;
  return bar_box(x(row), axis_.bar_width(), panel_.y(high_[row]), panel_.y(low_[row]));
}

void Painter::lead(Point from, const Box& to, Color color) {
  const double end = std::clamp(from.y, to.top, to.bottom);
  if (std::abs(end - from.y) < far_text) return;
  color.alpha = lead_alpha;
  canvas_.line({from, {std::clamp(from.x, to.left + 2, to.right - 2), end}}, {color});
}

void Painter::label(size_t row, Point at, Point anchor, const std::string& text,
                    const Lettering& lettering, bool framed) {
  const double margin = framed ? 4.0 : 1.0;
  const Box ink = canvas_.ink(text, lettering);
  const Point extent{ink.right - ink.left + 2 * margin, ink.bottom - ink.top + 2 * margin};
  Box wanted = box_around(at, extent, anchor);
  bool upwards = anchor.y > 0.5;
  if (const auto bar = bar_at(row)) {
    if (anchor.y == 0.5) upwards = at.y <= (bar->top + bar->bottom) / 2;
    const Box around{bar->left, bar->top - text_space, bar->right, bar->bottom + text_space};
    if (around.meets(wanted)) {
      const double y = upwards ? around.top - extent.y : around.bottom;
      wanted = wanted.moved(0.0, y - wanted.top);
      at.y = upwards ? bar->top : bar->bottom;
    }
  }
  wanted = wanted.moved(std::round(wanted.left) - wanted.left, std::round(wanted.top) - wanted.top);
  const auto place = placement_.place(wanted, upwards, {farthest_text, farthest_text, true});
  if (!place) return;
  lead(at, *place, lettering.color);
  if (framed) canvas_.frame(*place, lettering.color);
  canvas_.text({place->left + margin - ink.left, place->top + margin - ink.top}, text, lettering,
               {0.0, 0.0});
}

void Painter::draw_dots(const Record& record, bool filled) {
  const double size = std::clamp(record.number("FontSize", 14.0), 8.0, 30.0);
  const double radius = std::clamp(axis_.slot_width() * 0.4, 1.0, size * 0.28);
  const Color color = theme_.line(record.text("TextColor"));
  const Series prices = view_.series(record, "Field1Id");
  for (const size_t row : axis_.one_per_slot(view_.rows(record))) {
    const Point centre = at(row, prices[row]);
    filled ? canvas_.disc(centre, radius, color) : canvas_.ring(centre, radius, color);
  }
}

void Painter::draw_text(const Record& record) {
  const bool is_centred =
      record.number("HorizontalAlign") == 1.0 && record.number("VerticalAlign") == 1.0;
  const std::string sign = record.text("Text");
  if (is_centred && (sign == "●" || sign == "O")) return draw_dots(record, sign != "O");
  const auto share = [&record](const char* key) {
    return std::clamp(record.number(key, 1.0) / 2, 0.0, 1.0);
  };
  const Point anchor{share("HorizontalAlign"), share("VerticalAlign")};
  const auto begins_letter = [](char byte) { return (byte & 0xC0) != 0x80; };
  const bool is_sign = std::ranges::count_if(sign, begins_letter) == 1;
  const Lettering lettering{theme_.text(record.text("TextColor")),
                            std::clamp(record.number("FontSize", 14.0), 8.0, 30.0), is_sign,
                            theme_.ground};
  const auto digits = static_cast<int>(std::clamp(record.number("Digit"), 0.0, 6.0));
  const Series prices = view_.series(record, "Field1Id");
  const Series numbers = view_.series(record, "NumberFieldId");
  for (const size_t row : axis_.one_per_slot(view_.rows(record))) {
    Point place = at(row, prices[row]);
    const double value = numbers.exists() ? numbers[row] : 0.0;
    if (std::isnan(place.y + value)) continue;
    place.x += record.number("HorizontalOffset");
    place.y -= record.number("VerticalOffset");
    const std::string text = numbers.exists() ? number_text(value, digits) : sign;
    label(row, place, anchor, text, lettering, false);
  }
}

/// A picture's name in a frame, since the pictures are the client's. One that looks at the last bar
/// only lies behind all others.
void Painter::draw_picture(const Record& record) {
  const std::string name = record.text("Field1Text");
  if (record.flag("IsLastCandle")) {
    if (!view_.marks(record)[view_.last_row()]) return;
    const Point foot{(axis_.left() + axis_.right()) / 2, panel_.bottom - 12};
    Color pale = theme_.label;
    pale.alpha = back_picture_alpha;
    canvas_.text(foot, name, {pale, 40.0, true}, {0.5, 1.0});
    return;
  }
  const Series prices = view_.series(record, "Field1Id");
  for (const size_t row : axis_.one_per_slot(view_.rows(record))) {
    if (std::isnan(prices[row])) continue;
    label(row, at(row, prices[row]), {0.5, 0.5}, name, {theme_.label, 10.0, false, theme_.ground},
          true);
  }
}

/// A small triangle at the foot of the panel.
void Painter::draw_notice(const Record& record) {
  const double y = panel_.bottom - 2;
  const double half = std::clamp(axis_.slot_width() * 0.6, 1.5, 4.5);
  for (const size_t row : axis_.one_per_slot(rows_that_hold(view_, record))) {
    canvas_.area({{x(row), y - 2 * half}, {x(row) - half, y}, {x(row) + half, y}}, theme_.notice);
  }
}

/// A note at the head of the panel.
void Painter::draw_sound(const Record& record) {
  const double y = panel_.top + 11;
  for (const size_t row : axis_.one_per_slot(rows_that_hold(view_, record, "Field1VisibleId"))) {
    const double stem = x(row) + 1.5;
    canvas_.line({{stem, y}, {stem, y - 8}, {stem + 3, y - 6}}, {theme_.notice, 1.2});
    canvas_.disc({x(row) - 0.5, y}, 2.0, theme_.notice);
  }
}

void Painter::draw_trade(const Record& record) {
  const auto& [word, side] = trade_word(record.text("Field1Text"));
  const double count = record.number("trade_count");
  TradeSign sign;
  sign.points_up = side == Side::buy;
  sign.is_square = side == Side::none;
  sign.text = std::string(word) + (count > 0.0 ? ' ' + number_text(count, 0) : std::string());
  sign.color = sign.points_up ? theme_.buy : sign.is_square ? theme_.close_out : theme_.sell;
  for (const size_t row : axis_.one_per_slot(rows_that_hold(view_, record))) {
    if (const auto bar = bar_at(row)) draw_sign(sign, x(row), *bar);
  }
}

/// The sign stands at the bar, the word beyond it.
void Painter::draw_sign(const TradeSign& sign, double x, const Box& bar) {
  constexpr double half = 5.0;
  constexpr double height = 9.0;
  const double top = sign.points_up ? bar.bottom + text_space : bar.top - text_space - height;
  const Box wanted{x - half, top, x + half, top + height};
  const bool is_dense = axis_.slot_width() < 3.0;
  auto place = placement_.place(wanted, !sign.points_up, {is_dense ? 18.0 : 40.0});
  if (!place && !is_dense) place = placement_.place(wanted, !sign.points_up, {40.0, 0.0, true});
  if (!place) return;
  const double middle = (place->left + place->right) / 2;
  const double foot = sign.points_up ? place->bottom : place->top;
  const double peak = sign.points_up ? place->top : place->bottom;
  if (sign.is_square) {
    canvas_.fill({middle - 4, place->top, middle + 4, place->bottom - 1}, sign.color);
  } else {
    canvas_.area({{middle, peak}, {place->left - 0.5, foot}, {place->right + 0.5, foot}},
                 sign.color);
  }
  const Lettering lettering{ink_on(sign.color), 10.0, true};
  const Point extent = canvas_.extent(sign.text, lettering);
  const Box word = box_around({middle, foot + (sign.points_up ? 1 : -1)},
                              {extent.x + 7, extent.y + 1}, {0.5, sign.points_up ? 0.0 : 1.0});
  const auto tag = placement_.place(word, !sign.points_up, {24.0, 0.0, true});
  if (!tag) return;
  canvas_.tag(*tag, sign.color);
  canvas_.text({(tag->left + tag->right) / 2, (tag->top + tag->bottom) / 2}, sign.text, lettering,
               {0.5, 0.5});
}

}  // namespace quor_host
