#include "resample.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "fields.h"
#include "period.h"

namespace quor_bars {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Seconds of a period that begins with a week, a month and a year.
int64_t length_of(uint32_t period) {
  const int64_t start = seconds_of(19730101000000);
  return end_of_period(start, period) - start;
}

/// The same number for all moments of one period.
int64_t period_number(int64_t key, uint32_t period) {
  const int64_t seconds = seconds_of(key);
  if (period >= period_of_a_day) return end_of_period(seconds, period);
  return seconds / one_day * one_day + seconds % one_day / length_of(period);
}

using Join = double (*)(double sum, double value);

Join join_of(uint32_t field) {
  if (field == field_open) return [](double first, double) { return first; };
  if (field == field_high) return [](double high, double value) { return std::max(high, value); };
  if (field == field_low) return [](double low, double value) { return std::min(low, value); };
  if (field == field_volume || field == field_amount) {
    return [](double sum, double value) { return sum + value; };
  }
  return [](double, double value) { return value; };
}

double joined(double result, double value, Join join) {
  if (std::isnan(value)) return result;
  return std::isnan(result) ? value : join(result, value);
}

double joined(std::span<const double> values, uint32_t field) {
  const Join join = join_of(field);
  double result = nan;
  for (const double value : values) result = joined(result, value, join);
  return result;
}

/// The first bar of the period in which the one before `end` lies.
size_t begin_of(const Bars& bars, uint32_t period, size_t end) {
  const int64_t number = period_number(bars.keys[end - 1], period);
  while (end > 0 && period_number(bars.keys[end - 1], period) == number) --end;
  return end;
}

}  // namespace

bool is_longer(uint32_t period, uint32_t than) { return length_of(period) > length_of(than); }

Bars resampled(const Bars& bars, uint32_t period) {
  Bars longer;
  longer.doubts = bars.doubts;
  for (size_t first = 0, end = 0; first < bars.keys.size(); first = end) {
    const int64_t number = period_number(bars.keys[first], period);
    while (end < bars.keys.size() && period_number(bars.keys[end], period) == number) ++end;
    longer.keys.push_back(bars.keys[first]);
    for (const auto& [field, values] : bars.columns) {
      longer.columns[field].push_back(joined(std::span(values).subspan(first, end - first), field));
    }
  }
  return longer;
}

std::vector<double> last_finished(const Bars& bars, uint32_t field, uint32_t period, size_t first) {
  const std::vector<double>& values = bars.columns.at(field);
  const auto value_before = [&](size_t begin) {
    if (begin == 0) return nan;
    const size_t start = begin_of(bars, period, begin);
    return joined(std::span(values).subspan(start, begin - start), field);
  };
  std::vector<double> finished;
  finished.reserve(bars.keys.size() - first);
  for (size_t row = first; row < bars.keys.size();) {
    const double value = value_before(begin_of(bars, period, row + 1));
    const int64_t number = period_number(bars.keys[row], period);
    for (; row < bars.keys.size() && period_number(bars.keys[row], period) == number; ++row) {
      finished.push_back(value);
    }
  }
  return finished;
}

std::vector<double> under_way(const Bars& bars, uint32_t field, uint32_t period, size_t first) {
  const std::vector<double>& values = bars.columns.at(field);
  const Join join = join_of(field);
  std::vector<double> made;
  if (first >= bars.keys.size()) return made;
  made.reserve(bars.keys.size() - first);
  double value = nan;
  int64_t number = 0;
  for (size_t row = begin_of(bars, period, first + 1); row < bars.keys.size(); ++row) {
    const int64_t own = period_number(bars.keys[row], period);
    value = joined(own == number ? value : nan, values[row], join);
    number = own;
    if (row >= first) made.push_back(value);
  }
  return made;
}

}  // namespace quor_bars
