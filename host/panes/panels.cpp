#include "panels.h"

#include <algorithm>
#include <cmath>

#include "../input/fields.h"
#include "../text.h"
#include "numbers.h"

namespace quor_host {
namespace {

/// What the record shows in sight.
Range range_of(const View& view, const Record& record) {
  Range range;
  if (has_no_value(record)) return range;
  if (record.text("Style") == "DoubleRect" || record.is("VolumeShape")) range.take(0.0);
  const bool is_shown = shows_always(record);
  const size_t first = view.first_row(record);
  for (const auto& [value_key, mark_key] : value_places) {
    const Series values = view.series(record, value_key);
    if (!values.exists()) continue;
    const Marks shown(view.series(mark_of(record, mark_key)));
    for (size_t row = first; row < view.row_count(); ++row) {
      if (is_shown || shown[row]) range.take(values[row]);
    }
  }
  return range;
}

/// Whether a range lies near another one, so that both can share its axis.
bool lies_near(const Range& range, const Range& other, double spans = 1.5) {
  const double room = spans * std::max({other.span(), 0.01 * other.reach(), 1e-9});
  return range.low > other.low - room && range.high < other.high + room;
}

/// Whether most values of a record lie far from the closes of their bars, though they may be near
/// the prices of other years.
bool is_no_price(const View& view, const Record& record) {
  const Series values = view.series(record, record.is("CandleShape") ? "CloseField" : "Field1Id");
  const Series closes = view.series(field_close);
  const Marks shown = view.marks(record);
  size_t near = 0;
  size_t far = 0;
  for (size_t row = view.first_row(record); row < view.row_count(); ++row) {
    if (closes[row] <= 0.0) return false;
    if (!shown[row] || std::isnan(values[row] + closes[row])) continue;
    ++(std::abs(values[row] / closes[row] - 1.0) > 0.5 ? far : near);
  }
  return far > near;
}

bool is_level(const View& view, const Record& record, const Range& range) {
  constexpr size_t least_bars = 3;
  const bool is_constant = !range.empty && range.span() == 0.0;
  return is_constant && record.is("PolylineShape") && record.text("Style") == "Polyline" &&
         view.rows(record).size() >= least_bars;
}

/// A record of the axis has a number as its title, up to which the axis of the record before it
/// goes.
void reach_for(Range& range, const Record& record) {
  const auto number = to_number(record.text("Field1Text"));
  if (record.is("YAxisRange") && number && lies_near({*number, *number, false}, range))
    range.take(*number);
}

/// Puts records into panels, one after the other. What they are is told from more bars than those
/// in sight, as a few bars would set lines apart that belong together.
class Arrangement {
 public:
  Arrangement(const View& view, const View& wide, const Record& bars, size_t most)
      : view_(view), wide_(wide), price_(range_of(wide, bars)), most_(most) {}

  void add(const Record& record) {
    const Range range = range_of(wide_, record);
    const Range in_sight = &view_ == &wide_ ? range : range_of(view_, record);
    if (is_level(wide_, record, range)) {
      levels_.push_back({{&record, range.low}, latest_});
      return;
    }
    if (!in_sight.empty) {
      latest_ = is_no_price(wide_, record) ? find_below(range) : find(range);
      take(groups_[latest_], range);
      take(panels_[latest_].range, in_sight);
    }
    const bool follows = !in_sight.empty || record.is("YAxisRange");
    panels_[follows ? latest_ : 0].records.push_back(&record);
    reach_for(panels_[latest_].range, record);
  }

  /// Levels go with the lines that stand near them: written before a level, or behind it.
  std::vector<Panel> finish() {
    for (const auto& [level, behind] : levels_) {
      const size_t place = find_for_level(level.value, behind);
      Panel& panel = panels_[place];
      groups_[place].take(level.value);
      panel.range.take(level.value);
      panel.records.push_back(level.record);
      panel.levels.push_back(level);
    }
    return std::move(panels_);
  }

 private:
  struct WaitingLevel {
    Level level;
    size_t behind;  ///< the panel of the line before it
  };

  /// The panel for a range, a new one if need be.
  size_t find(const Range& range) { return lies_near(range, price_) ? 0 : find_below(range); }

  size_t find_below(const Range& range) {
    for (size_t i = 1; i < panels_.size(); ++i) {
      // What is no price may not be lost on the scale of something else.
      const Range& other = groups_[i];
      if (lies_near(range, other) && range.span() > 0.1 * other.span()) return i;
    }
    return new_panel();
  }

  size_t find_for_level(double value, size_t behind) {
    const Range range{value, value, false};
    if (lies_near(range, price_, 0.5)) return 0;
    constexpr double far = 4.0;
    if (behind > 0 && lies_near(range, groups_[behind], far)) return behind;
    if (behind + 1 < panels_.size() && lies_near(range, groups_[behind + 1], far)) {
      return behind + 1;
    }
    const bool could_be_a_price = value > 0.5 * price_.low && value < 1.5 * price_.high;
    return could_be_a_price ? 0 : find(range);
  }

  size_t new_panel() {
    if (panels_.size() < most_) {
      panels_.emplace_back();
      groups_.emplace_back();
    }
    return panels_.size() - 1;
  }

  static void take(Range& whole, const Range& range) {
    whole.take(range.low);
    whole.take(range.high);
  }

  const View& view_;
  const View& wide_;
  Range price_;
  size_t most_;
  size_t latest_ = 0;
  std::vector<Panel> panels_ = std::vector<Panel>(1);
  std::vector<Range> groups_ = std::vector<Range>(1);  ///< of all bars that are looked at
  std::vector<WaitingLevel> levels_;
};

bool stands_on_zero(const Panel& panel) {
  return panel.range.low == 0.0 && std::ranges::all_of(panel.records, [](const Record* record) {
           return record->is("BarShape") || record->is("VolumeShape");
         });
}

void widen(Panel& panel) {
  Range& range = panel.range;
  if (range.empty) range = {0.0, 1.0, false};
  const double margin = range.span() > 0.0  ? 0.06 * range.span()
                        : range.high != 0.0 ? 0.1 * std::abs(range.high)
                                            : 0.1;
  if (!stands_on_zero(panel)) range.low -= margin;
  range.high += margin;
}

/// Prices have the decimals of the file, averages of them at least two; other values as many as
/// their size asks for. None if all values are whole.
int digits_of(const View& view, const Panel& panel, bool holds_prices) {
  const int of_prices = holds_prices ? decimals_of(view.series(field_close).values()) : 0;
  int of_lines = 0;
  size_t lines = 0;
  for (const Record* record : panel.records) {
    if (!record->flag("TitleVisible")) continue;
    of_lines = std::max(of_lines, decimals_of(view.series(*record, "Field1Id").values()));
    ++lines;
  }
  if (of_prices + of_lines == 0 && (holds_prices || lines > 0)) return 0;
  return holds_prices ? std::max(2, of_prices) : decimals_for(panel.range.reach());
}

}  // namespace

Record bars_record(const View& view) {
  const bool whole = view.has(field_open) && view.has(field_high) && view.has(field_low);
  return parse_records(whole ? R"([{"ShapeName":"CandleShape","ZIndex":0.5,"OpenField":7,
      "HighField":8,"LowField":9,"CloseField":11,"UpperShadowColor":"Theme.Rise",
      "EqualShadowColor":"Theme.Rise","LowerShadowColor":"Theme.Fall"}])"
                             : R"([{"ShapeName":"PolylineShape","ZIndex":0.5,"Field1Id":11,
      "LineColor":"Theme.Ink"}])")
      .front();
}

Record volume_record() {
  return parse_records(R"([{"ShapeName":"VolumeShape","ZIndex":1,"Field1Id":13,"TitleVisible":1,
      "Field1Text":"Volume","UpperShadowColor":"Theme.Rise","LowerShadowColor":"Theme.Fall"}])")
      .front();
}

void Range::take(double value) {
  if (!std::isfinite(value)) return;
  low = empty ? value : std::min(low, value);
  high = empty ? value : std::max(high, value);
  empty = false;
}

double Range::reach() const { return std::max(std::abs(low), std::abs(high)); }

std::vector<Panel> arrange(const View& view, const View& wide, const std::vector<Record>& records,
                           size_t most) {
  Arrangement arrangement(view, wide, records.front(), most);
  for (const Record& record : records) arrangement.add(record);
  std::vector<Panel> panels = arrangement.finish();
  const bool has_prices = !records.front().is("VolumeShape");
  for (Panel& panel : panels) {
    panel.digits = digits_of(view, panel, has_prices && &panel == &panels.front());
    widen(panel);
  }
  return panels;
}

}  // namespace quor_host
