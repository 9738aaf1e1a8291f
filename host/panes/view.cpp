#include "view.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace quor_host {

View::View(CellReader cells, const Bars& bars, size_t last)
    : cells_(std::move(cells)),
      bars_(bars),
      first_(bars.keys.size() - std::clamp<size_t>(last, 1, bars.keys.size())) {
  if (std::ranges::is_sorted(bars.keys)) return;
  order_.resize(bars.keys.size());
  std::iota(order_.begin(), order_.end(), size_t{0});
  std::ranges::sort(order_, {}, [&bars](size_t i) { return bars.keys[i]; });
  for (const size_t place : order_) sorted_keys_.push_back(bars.keys[place]);
}

double View::value(std::optional<uint32_t> column, size_t row) const {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  if (!column) return nan;
  const auto field = bars_.columns.find(*column);
  const size_t missing =
      field == bars_.columns.end() ? row_count() : row_count() - field->second.size();
  const size_t place = order_.empty() ? row : order_[row];
  const double value = place < missing ? cells_(static_cast<uint32_t>(row), *column)
                                       : field->second[place - missing];
  // Sums and ratios of what lies below stay finite.
  return std::abs(value) < 1e100 ? value : nan;
}

Series View::series(std::optional<uint32_t> column) const {
  if (!column) return {};
  std::vector<double>& values = read_[*column];
  if (values.empty()) {
    for (size_t row = first_; row < row_count(); ++row) values.push_back(value(column, row));
  }
  return {values, first_};
}

size_t View::first_row(const Record& record) const {
  return record.flag("IsLastCandle") ? last_row() : first_;
}

std::vector<size_t> View::rows(const Record& record) const {
  const Marks shown = marks(record);
  std::vector<size_t> rows;
  for (size_t row = first_row(record); row < row_count(); ++row) {
    if (shown[row]) rows.push_back(row);
  }
  return rows;
}

}  // namespace quor_host
