#include "panels.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

#include "../text.h"

namespace quor_host {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The values of a record, and the marks of the bars where they show.
constexpr const char* places[][2] = {
    {"Field1Id", "Field1VisibleId"}, {"Field2Id", "Field2VisibleId"},
    {"Field3Id", "Field3VisibleId"}, {"HighField", "Field1VisibleId"},
    {"LowField", "Field1VisibleId"},
};

/// Some records show at every bar, and their marks choose how.
bool shows_always(const Record& record) {
  const std::string style = record.text("Style");
  return style == "ColorPolyline" || style == "DoubleRect" || record.flag("IsVolStick");
}

/// What the record shows in sight.
Range range_of(const View& view, const Record& record) {
  Range range;
  // The only column of signals says when, not at which value.
  if (record.is("NoticeShape") || record.is("FuturesTradeShape") || record.is("SoundShape")) {
    return range;
  }
  if (record.text("Style") == "DoubleRect") range.take(0.0);  // columns stand on 0
  for (const auto& [value_key, mark_key] : places) {
    const auto column = record.column(value_key);
    if (!column) continue;
    const auto own_mark = record.column(mark_key);
    const auto mark = own_mark ? own_mark : record.column("Field1VisibleId");
    for (size_t row = view.first_row(record); row < view.row_count(); ++row) {
      if (shows_always(record) || view.shows(mark, row)) range.take(view.value(column, row));
    }
  }
  return range;
}

/// Whether a range lies near another one, so that both can share its axis.
bool lies_near(const Range& range, const Range& other) {
  const double span = std::max(other.span(), 1e-9);
  return range.low > other.low - 1.5 * span && range.high < other.high + 1.5 * span;
}

/// A record of the axis has a number as its title, up to which the axis of the record before it
/// goes.
void reach(Range& range, const Record& record) {
  const auto number = to_number(record.text("Field1Text"));
  if (record.is("YAxisRange") && number && lies_near({*number, *number, false}, range))
    range.take(*number);
}

/// The panel for a range, a new one if need be. The last one takes what would need too many.
size_t find_panel(std::vector<Panel>& panels, const Range& range, const Range& price, size_t most) {
  if (lies_near(range, price)) return 0;
  for (size_t i = 1; i < panels.size(); ++i) {
    // What is no price may not be lost on the scale of something else.
    const Range& other = panels[i].range;
    if (lies_near(range, other) && range.span() > 0.1 * other.span()) return i;
  }
  if (panels.size() < most) panels.emplace_back();
  return panels.size() - 1;
}

void widen(Range& range) {
  if (range.empty) range = {0.0, 1.0, false};
  const double margin =
      range.span() > 0.0 ? 0.06 * range.span() : std::max(1.0, std::abs(range.high)) * 0.1;
  range.low -= margin;
  range.high += margin;
}

}  // namespace

std::string number_text(double value, int digits) {
  char text[400];
  char* end = text + sizeof text;
  return {text, std::to_chars(text, end, value, std::chars_format::fixed, digits).ptr};
}

Record bars_record(const Bars& bars) {
  const bool whole =
      bars.columns.contains(7) && bars.columns.contains(8) && bars.columns.contains(9);
  return parse_records(whole ? R"([{"ShapeName":"CandleShape","ZIndex":0.5,"OpenField":7,
      "HighField":8,"LowField":9,"CloseField":11,"UpperShadowColor":"#CC3030",
      "EqualShadowColor":"#CC3030","LowerShadowColor":"#0C993F"}])"
                             : R"([{"ShapeName":"PolylineShape","ZIndex":0.5,"Field1Id":11,
      "LineColor":"#333842"}])")
      .front();
}

View::View(const Session& session, const Bars& bars, size_t last)
    : session_(session), bars_(bars), order_(bars.keys.size()) {
  std::iota(order_.begin(), order_.end(), size_t{0});
  std::ranges::sort(order_, {}, [&bars](size_t i) { return bars.keys[i]; });
  first_ = order_.size() - std::min(order_.size(), last);
}

double View::value(std::optional<uint32_t> column, size_t row) const {
  if (!column) return nan;
  const auto field = bars_.columns.find(*column);
  const double value = field == bars_.columns.end()
                           ? session_.cell(static_cast<uint32_t>(row), *column)
                           : field->second[order_[row]];
  // Sums and ratios of what lies below stay finite.
  return std::abs(value) < 1e100 ? value : nan;
}

bool View::shows(std::optional<uint32_t> column, size_t row) const {
  return !column || value(column, row) == 1.0;
}

size_t View::first_row(const Record& record) const {
  return record.flag("IsLastCandle") ? last_row() : first_;
}

std::vector<size_t> View::rows(const Record& record) const {
  const auto mark = record.column("Field1VisibleId");
  std::vector<size_t> rows;
  for (size_t row = first_row(record); row < row_count(); ++row) {
    if (shows(mark, row)) rows.push_back(row);
  }
  return rows;
}

void Range::take(double value) {
  if (!std::isfinite(value)) return;
  low = empty ? value : std::min(low, value);
  high = empty ? value : std::max(high, value);
  empty = false;
}

std::vector<Panel> arrange(const View& view, const std::vector<Record>& records, size_t most) {
  std::vector<Panel> panels(1);
  const Range price = range_of(view, records.front());
  size_t latest = 0;
  for (const Record& record : records) {
    const Range range = range_of(view, record);
    if (!range.empty) {
      latest = find_panel(panels, range, price, most);
      panels[latest].range.take(range.low);
      panels[latest].range.take(range.high);
    }
    panels[range.empty ? 0 : latest].records.push_back(&record);
    reach(panels[latest].range, record);
  }
  for (Panel& panel : panels) widen(panel.range);
  return panels;
}

}  // namespace quor_host
