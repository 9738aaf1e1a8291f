#include "time_axis.h"

#include <algorithm>
#include <cmath>

#include "../panes/measures.h"

namespace quor_host {
namespace {

constexpr double room_behind = 45.0;

}  // namespace

TimeAxis::TimeAxis(double left, double right, size_t first_row, size_t rows)
    : left_(left), right_(right), first_row_(static_cast<double>(first_row)) {
  const double width = std::max(1.0, std::floor(right - left - room_behind));
  const auto count = static_cast<double>(rows);
  slot_width_ = std::max(1.0, width / count);
  rows_per_slot_ = std::max(1.0, count / width);
  for (size_t row = first_row; row < first_row + rows; ++row) {
    if (slots_.empty() || x(row) != slots_.back().x) slots_.push_back({row, row, x(row)});
    slots_.back().end = row + 1;
  }
}

double TimeAxis::slot_of(size_t row) const {
  return std::floor((static_cast<double>(row) - first_row_) / rows_per_slot_);
}

double TimeAxis::x(size_t row) const {
  return std::floor(left_ + (slot_of(row) + 0.5) * slot_width_) + 0.5;
}

double TimeAxis::bar_width() const {
  const double odd = 2 * std::floor(slot_width_ * bar_share / 2) + 1;
  return std::clamp(odd < slot_width_ ? odd : odd - 2, 1.0, broadest_bar);
}

std::vector<size_t> TimeAxis::one_per_slot(const std::vector<size_t>& rows) const {
  std::vector<size_t> thinned;
  for (const size_t row : rows) {
    if (thinned.empty() || slot_of(row) != slot_of(thinned.back())) thinned.push_back(row);
  }
  return thinned;
}

}  // namespace quor_host
