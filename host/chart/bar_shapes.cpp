// What stands at bars: candles, sticks and columns, volume, areas.
#include <algorithm>
#include <cmath>

#include "../input/fields.h"
#include "../panes/measures.h"
#include "painter.h"

namespace quor_host {
namespace {

struct Candle {
  double open;
  double high;
  double low;
  double close;
};

/// The candles of a record, several rows of a slot in one.
class Candles {
 public:
  Candles(const View& view, const Record& record)
      : shown_(view.marks(record)),
        open_(view.series(record, "OpenField")),
        high_(view.series(record, "HighField")),
        low_(view.series(record, "LowField")),
        close_(view.series(record, "CloseField")) {}

  std::optional<Candle> at(const Slot& slot) const {
    std::optional<Candle> candle;
    for (size_t row = slot.begin; row < slot.end; ++row) {
      if (!shown_[row] || std::isnan(open_[row] + close_[row])) continue;
      if (!candle) candle = {open_[row], open_[row], open_[row], open_[row]};
      candle->high = std::fmax(candle->high, std::fmax(high_[row], close_[row]));
      candle->low = std::fmin(candle->low, std::fmin(low_[row], close_[row]));
      candle->close = close_[row];
    }
    return candle;
  }

 private:
  Marks shown_;
  Series open_;
  Series high_;
  Series low_;
  Series close_;
};

std::string candle_brush(const Record& record, const Candle& candle) {
  if (record.flag("IsColorKLine")) return record.text("FilledColor");
  if (candle.close == candle.open) return record.text("EqualShadowColor");
  return record.text(candle.close > candle.open ? "UpperShadowColor" : "LowerShadowColor");
}

/// A stick as it is drawn at a slot, in pixels.
struct Stick {
  double from = 0.0;
  double to = 0.0;
  bool marked = false;
  double length() const { return std::abs(to - from); }
};

}  // namespace

void Painter::keep_clear(const Record& record) {
  const bool is_line = record.is("PolylineShape");
  high_ = view_.series(record, is_line ? "Field1Id" : "HighField");
  low_ = view_.series(record, is_line ? "Field1Id" : "LowField");
  if (is_line) return keep_clear_of_line();
  const Candles candles(view_, record);
  for (const Slot& slot : axis_.slots()) {
    const auto candle = candles.at(slot);
    if (!candle) continue;
    placement_.occupy(
        bar_box(slot.x, axis_.bar_width(), panel_.y(candle->high), panel_.y(candle->low)));
  }
}

void Painter::keep_clear_of_line() {
  constexpr int parts = 4;  // of a piece between two bars, whose box would take too much
  std::optional<Point> before;
  for (const Slot& slot : axis_.slots()) {
    const Point here = at(slot.end - 1, high_[slot.end - 1]);
    for (int part = 0; before && part < parts && std::isfinite(here.y); ++part) {
      const double width = (here.x - before->x) / parts;
      const double height = (here.y - before->y) / parts;
      const Point from{before->x + part * width, before->y + part * height};
      placement_.occupy(bar_box(from.x + width / 2, width, from.y, from.y + height));
    }
    before.reset();
    if (std::isfinite(here.y)) before = here;
  }
}

void Painter::draw_candles(const Record& record) {
  const Candles candles(view_, record);
  const bool american = record.text("Style") == "American";
  const double width = axis_.bar_width();
  const double half = width / 2;
  for (const Slot& slot : axis_.slots()) {
    const auto candle = candles.at(slot);
    if (!candle) continue;
    const Color color = theme_.line(candle_brush(record, *candle));
    const double open = panel_.y(candle->open);
    const double close = panel_.y(candle->close);
    canvas_.fill(bar_box(slot.x, 1.0, panel_.y(candle->high), panel_.y(candle->low)), color);
    if (american) {
      canvas_.fill({slot.x - half, std::round(open), slot.x, std::round(open) + 1.0}, color);
      canvas_.fill({slot.x, std::round(close), slot.x + half, std::round(close) + 1.0}, color);
      continue;
    }
    const Box body = bar_box(slot.x, width, open, close);
    const bool hollow =
        record.flag("IsColorKLine") ? record.flag("IsFilled") : candle->close > candle->open;
    canvas_.fill(body, hollow && width > 2.0 ? theme_.ground : color);
    if (hollow) canvas_.frame(body, color);
  }
}

/// `IsFilled` asks for the outline only, except from sticks of two colours, which always have it.
/// Columns stand on 0, slim and full ones for the first mark, wide outlines for the second. Of the
/// rows of a slot the longest stick is drawn.
void Painter::draw_sticks(const Record& record) {
  const Color upper = theme_.line(record.text("UpperShadowColor"));
  const Color lower = theme_.line(record.text("LowerShadowColor"));
  const bool by_mark = record.flag("IsVolStick");
  const bool by_sign = record.flag("IsColorStick");
  const bool columns = record.text("Style") == "DoubleRect";
  const double bar = axis_.bar_width();
  double width = record.number("LineWidth", -1.0);
  if (by_sign) width = std::max(width, 2 * std::floor(bar / 4) + 1);
  if (width <= 0.0) width = columns ? 2 * std::floor(bar / 4) + 1 : bar;
  const bool hollow = record.flag("IsFilled") && !by_mark && !by_sign && width > 2.0;
  const double zero = panel_.y(0.0);
  const Series first = view_.series(record, "Field1Id");
  const Series second = view_.series(record, "Field2Id");
  const auto draw_marked = [&](const Marks& shown, const auto& draw_stick) {
    for (const Slot& slot : axis_.slots()) {
      std::optional<Stick> longest;
      for (size_t row = slot.begin; row < slot.end; ++row) {
        const Stick stick{panel_.y(first[row]), columns ? zero : panel_.y(second[row]), shown[row]};
        if (std::isnan(stick.length()) || !(stick.marked || by_mark)) continue;
        if (!longest || stick.length() > longest->length()) longest = stick;
      }
      if (longest) draw_stick(slot.x, *longest);
    }
  };
  draw_marked(view_.marks(record), [&](double x, const Stick& stick) {
    const bool up = by_mark ? stick.marked : std::min(stick.from, stick.to) < zero;
    const Box box = bar_box(x, width, stick.from, stick.to);
    hollow ? canvas_.frame(box, up ? upper : lower) : canvas_.fill(box, up ? upper : lower);
  });
  if (!columns) return;
  draw_marked(view_.marks(record, "Field2VisibleId"), [&](double x, const Stick& stick) {
    canvas_.frame(bar_box(x, bar, stick.from, stick.to), lower);
  });
}

void Painter::draw_volume(const Record& record) {
  const Color rise = theme_.area(record.text("UpperShadowColor"), volume_alpha);
  const Color fall = theme_.area(record.text("LowerShadowColor"), volume_alpha);
  const Series volume = view_.series(record, "Field1Id");
  const Series close = view_.series(field_close);
  const Series open = view_.series(view_.has(field_open) ? field_open : field_close);
  for (const Slot& slot : axis_.slots()) {
    double highest = 0.0;
    for (size_t row = slot.begin; row < slot.end; ++row) {
      highest = std::fmax(highest, volume[row]);
    }
    if (highest <= 0.0) continue;
    canvas_.fill(bar_box(slot.x, axis_.bar_width(), panel_.y(highest), panel_.y(0.0)),
                 close[slot.end - 1] < open[slot.begin] ? fall : rise);
  }
}

/// Behind marked bars; from edge to edge for a record that looks at the last bar only.
void Painter::draw_background(const Record& record) {
  const Color color = theme_.area(record.text("FilledColor"), background_alpha);
  const std::string second = record.text("GradientColor");
  const Color end = second.empty() ? color : theme_.area(second, background_alpha);
  const auto draw = [&](double left, double right) {
    canvas_.gradient({left, panel_.top, right, panel_.bottom}, color, end,
                     record.flag("GradientDirection"));
  };
  const Marks shown = view_.marks(record);
  if (record.flag("IsLastCandle")) {
    if (shown[view_.last_row()]) draw(axis_.left(), axis_.right());
    return;
  }
  const double half = axis_.slot_width() / 2;
  std::optional<double> left;  // of marked slots side by side
  double right = axis_.left();
  for (const Slot& slot : axis_.slots()) {
    size_t marked = 0;
    for (size_t row = slot.begin; row < slot.end; ++row) marked += shown[row] ? 1 : 0;
    if (2 * marked >= slot.end - slot.begin) {
      if (!left) left = std::round(slot.x - half);
      right = std::round(slot.x + half);
    } else if (left) {
      draw(*left, right);
      left.reset();
    }
  }
  if (left) draw(*left, right);
}

void Painter::draw_region(const Record& record) {
  const Color color = theme_.area(record.text("FilledColor"), region_alpha);
  const Marks shown = view_.marks(record);
  const Series first = view_.series(record, "Field1Id");
  const Series second = view_.series(record, "Field2Id");
  std::vector<Point> upper;
  std::vector<Point> lower;
  const auto finish_run = [&] {
    upper.insert(upper.end(), lower.rbegin(), lower.rend());
    canvas_.area(upper, color);
    upper.clear();
    lower.clear();
  };
  for (const Slot& slot : axis_.slots()) {
    Range range;
    for (size_t row = slot.begin; row < slot.end; ++row) {
      if (!shown[row] || std::isnan(first[row] + second[row])) continue;
      range.take(first[row]);
      range.take(second[row]);
    }
    if (range.empty) {
      finish_run();
      continue;
    }
    upper.push_back({slot.x, panel_.y(range.high)});
    lower.push_back({slot.x, panel_.y(range.low)});
  }
  finish_run();
}

}  // namespace quor_host
