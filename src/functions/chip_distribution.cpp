#include "functions/chip_distribution.h"

#include <algorithm>
#include <limits>

namespace quor {

/// The volume of a bar counts in full, however old the bar is: the turnover by which chips would
/// change hands is taken relative to the volume itself, so it is whole at every bar, and whole
/// turnovers don't count.
ChipDistribution::ChipDistribution(Tick tick, const ChipBars& bars, std::vector<CloudData>& levels)
    : tick_(tick),
      ticks_per_unit_(tick == Tick::whole ? 1.0 : 100.0),
      step_price_(1.0 / ticks_per_unit_),
      levels_(levels) {
  const size_t count = count_bars(bars);
  if (!lay_grid(bars, count)) return;
  const size_t size = bars.volume.size();
  for (size_t i = size; i-- > size - count;) {
    if (bars.high[i] > bars.low[i]) {
      add_bar({bars.low[i], bars.high[i], average_price(bars, i), bars.volume[i]});
    }
  }
}

/// How many of the newest bars count. Behind the first 101 a market of whole prices ends the walk,
/// and so does a bar without a volume.
size_t ChipDistribution::count_bars(const ChipBars& bars) const {
  const size_t size = bars.volume.size();
  for (size_t age = 101; age < size; ++age) {
    if (tick_ == Tick::whole || is_null(bars.volume[size - 1 - age])) return age;
  }
  return size;
}

/// Lays levels from the lowest low to the highest high. False if that is no range of prices. A low
/// of 0 is none; nulls are passed over.
bool ChipDistribution::lay_grid(const ChipBars& bars, size_t count) {
  constexpr int64_t fine_levels = 120;
  double high = 0.0;
  double low = std::numeric_limits<double>::infinity();
  for (size_t i = bars.volume.size() - count; i < bars.volume.size(); ++i) {
    if (bars.high[i] > high) high = bars.high[i];
    if (bars.low[i] < low && bars.low[i] != 0.0) low = bars.low[i];
  }
  // A price beyond 64 bits has the lowest tick of all.
  const int64_t top = ticks(high);
  const int64_t bottom = ticks(low);
  if (!(low > 0) || low > high || bottom < 0 || top < bottom) return false;

  const int64_t range = top - bottom;
  if (range + 1 > fine_levels) {
    const int64_t whole_step = range / fine_levels;
    // On the way over a price the step may lose a tick: 29 ticks become 28.
    step_ticks_ = ticks(static_cast<double>(whole_step) / ticks_per_unit_);
    step_price_ = static_cast<double>(step_ticks_) / ticks_per_unit_;
  }
  lowest_tick_ = aligned(bottom);
  levels_.assign(index_of(top) + 1, {null_value, 0.0});
  return true;
}

/// 0 where nothing is known of it.
double ChipDistribution::average_price(const ChipBars& bars, size_t i) const {
  if (tick_ == Tick::whole || !(bars.volume[i] > 0)) return 0.0;
  if (bars.amount[i] > 0) return bars.amount[i] / bars.volume[i];
  return (bars.low[i] + bars.high[i]) * 0.5;
}

void ChipDistribution::add_bar(Record bar) {
  if (!(bar.low > 0) || !(bar.volume > 0)) return;
  if (bar.average != 0.0 && (bar.average < bar.low || bar.average > bar.high)) {
    bar.average = (bar.low + bar.high) * 0.5;
  }
  const int64_t top = ticks(bar.high);
  const int64_t bottom = aligned(ticks(bar.low));
  const int64_t peak = aligned(ticks(bar.average));
  const int64_t count = (top - bottom) / step_ticks_ + 1;
  if (peak == 0 || peak < bottom || peak > top) {
    spread_evenly(bar, bottom, count);
  } else {
    bar.average = static_cast<double>(peak) / ticks_per_unit_;
    spread_triangle(bar, bottom, peak, count);
  }
}

/// The prices start at the bar's low, off the grid.
void ChipDistribution::spread_evenly(const Record& bar, int64_t bottom, int64_t count) {
  const size_t first = index_of(bottom);
  const double share = bar.volume / static_cast<double>(count);
  for (int64_t i = 0; i < count; ++i) {
    const double price = bar.low + static_cast<double>(i) * step_price_;
    add_to_level(first + static_cast<size_t>(i), price, share);
  }
}

/// The lowest level may lie below the bar's low; its volume is negative then.
void ChipDistribution::spread_triangle(const Record& bar, int64_t bottom, int64_t peak,
                                       int64_t count) {
  const size_t first = index_of(bottom);
  const double apex = (bar.volume + bar.volume) / static_cast<double>(count);
  for (int64_t i = 0; i < count; ++i) {
    const int64_t tick = bottom + i * step_ticks_;
    const double price = static_cast<double>(tick) / ticks_per_unit_;
    double volume = apex;
    if (tick < peak) volume = (price - bar.low) / (bar.average - bar.low) * apex;
    if (tick > peak) volume = (bar.high - price) / (bar.high - bar.average) * apex;
    add_to_level(first + static_cast<size_t>(i), price, volume);
  }
}

/// The first bar that reaches a level gives it its price.
void ChipDistribution::add_to_level(size_t index, double price, double volume) {
  CloudData& level = levels_[index];
  if (is_null(level.price)) level.price = price;
  level.volume += volume;
  total_volume_ += volume;
}

double ChipDistribution::price_of_share(double percent) const {
  const double wanted = total_volume_ * percent / 100.0;
  double sum = 0.0;
  double price = 0.0;
  for (const CloudData& level : levels_) {
    if (is_null(level.price)) continue;
    sum += level.volume;
    price = level.price;
    if (sum >= wanted) break;
  }
  return price;
}

double ChipDistribution::share_up_to(double price) const {
  const int64_t tick = ticks(price);
  if (tick < lowest_tick_) return 0.0;
  const size_t count = std::min(index_of(tick) + 1, levels_.size());
  double sum = 0.0;
  for (size_t i = 0; i < count; ++i) sum += levels_[i].volume;
  return sum / total_volume_;
}

}  // namespace quor
