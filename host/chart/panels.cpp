#include "panels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace quor_host {
namespace {

constexpr uint32_t field_high = 8;
constexpr uint32_t field_low = 9;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The values that the record shows in sight; sticks stand on their second value.
Range range_of(const View& view, const Record& record) {
  Range range;
  for (const char* key : {"Field1Id", "Field2Id", "Field3Id", "HighField", "LowField"}) {
    const auto column = record.column(key);
    if (!column) continue;
    for (size_t row = view.first_row(); row < view.row_count(); ++row) {
      range.take(view.value(column, row));
    }
  }
  return range;
}

bool has_values(const Record& record) {
  return !record.is("NoticeShape") && !record.is("FuturesTradeShape") && !record.is("SoundShape") &&
         !record.is("YAxisRange") && !record.is("RectShape");
}

/// Whether a range lies near another one, so that both can share its axis.
bool lies_near(const Range& range, const Range& other) {
  const double span = std::max(other.span(), 1e-9);
  return range.low > other.low - 1.5 * span && range.high < other.high + 1.5 * span;
}

/// The same for values that are no prices: neither may be lost on the scale of the other.
bool shares_scale(const Range& range, const Range& other) {
  return lies_near(range, other) && range.span() > 0.05 * other.span();
}

void join(Panel& panel, const Record& record, const Range& range) {
  panel.records.push_back(&record);
  if (range.empty) return;
  panel.range.take(range.low);
  panel.range.take(range.high);
}

void widen(Range& range) {
  if (range.empty) range = {0.0, 1.0, false};
  const double margin = range.span() > 0.0 ? 0.06 * range.span() : std::max(1.0, range.high) * 0.1;
  range.low -= margin;
  range.high += margin;
}

}  // namespace

View::View(const Session& session, const Bars& bars, size_t last) : session_(session) {
  std::vector<size_t> order(bars.keys.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::ranges::sort(order, {}, [&bars](size_t i) { return bars.keys[i]; });
  for (const size_t i : order) keys_.push_back(bars.keys[i]);
  for (const auto& [field, values] : bars.columns) {
    for (const size_t i : order) bars_[field].push_back(values[i]);
  }
  first_ = keys_.size() - std::min(keys_.size(), last);
}

double View::bar(uint32_t field, size_t row) const {
  const auto column = bars_.find(field);
  return column == bars_.end() ? nan : column->second[row];
}

double View::value(std::optional<uint32_t> column, size_t row) const {
  return column ? session_.cell(static_cast<uint32_t>(row), *column) : nan;
}

bool View::shows(std::optional<uint32_t> column, size_t row) const {
  return !column || value(column, row) == 1.0;
}

void Range::take(double value) {
  if (!std::isfinite(value)) return;
  low = empty ? value : std::min(low, value);
  high = empty ? value : std::max(high, value);
  empty = false;
}

std::vector<Panel> arrange(const View& view, const std::vector<Record>& records) {
  std::vector<Panel> panels(1);
  for (size_t row = view.first_row(); row < view.row_count(); ++row) {
    panels[0].range.take(view.bar(field_low, row));
    panels[0].range.take(view.bar(field_high, row));
    panels[0].range.take(view.bar(11, row));
  }
  const Range price = panels[0].range;
  for (const Record& record : records) {
    const Range range = has_values(record) ? range_of(view, record) : Range();
    if (range.empty || lies_near(range, price)) {
      join(panels[0], record, range);
      continue;
    }
    const auto panel = std::find_if(panels.begin() + 1, panels.end(), [&range](const Panel& other) {
      return shares_scale(range, other.range);
    });
    join(panel == panels.end() ? panels.emplace_back() : *panel, record, range);
  }
  for (Panel& panel : panels) widen(panel.range);
  return panels;
}

}  // namespace quor_host
