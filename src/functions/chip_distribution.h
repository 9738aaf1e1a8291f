// The chip distribution: the volume that recent bars have traded, spread over a grid of prices.
#pragma once

#include <cstdint>
#include <vector>

#include "core/data_table.h"
#include "core/word_scratch.h"

namespace quor {

/// The bars that a distribution is made of, oldest first, as long as each other.
struct ChipBars {
  /// No more bars than these count.
  static constexpr int32_t most = 121;

  Window high;
  Window low;
  Window volume;
  Window amount;
};

/// What a market's prices are counted in.
enum class Tick : uint8_t { whole, hundredth };

class ChipDistribution {
 public:
  /// Builds the distribution in the memory of `levels`, whose content is dropped. There are at most
  /// some 240 levels, whatever the prices.
  ChipDistribution(Tick tick, const ChipBars& bars, std::vector<CloudData>& levels);

  /// Whether no chips are in it; the two questions below are for one that has some.
  bool empty() const { return !(total_volume_ > 0); }
  /// The price of the lowest level at which that many percent of all chips are reached.
  double price_of_share(double percent) const;
  /// The share of all chips that lie at or below a price, from 0 to 1.
  double share_up_to(double price) const;

 private:
  /// A bar's volume on its way into the distribution. `average` is where most of it goes.
  struct Record {
    double low;
    double high;
    double average;
    double volume;
  };

  size_t count_bars(const ChipBars& bars) const;
  bool lay_grid(const ChipBars& bars, size_t count);
  double average_price(const ChipBars& bars, size_t i) const;
  void add_bar(Record bar);
  void spread_evenly(const Record& bar, int64_t bottom, int64_t count);
  void spread_triangle(const Record& bar, int64_t bottom, int64_t peak, int64_t count);
  void add_to_level(size_t index, double price, double volume);

  int64_t ticks(double price) const { return to_int64(ticks_per_unit_ * price); }
  int64_t aligned(int64_t tick) const { return tick - tick % step_ticks_; }
  size_t index_of(int64_t tick) const {
    return static_cast<size_t>((tick - lowest_tick_) / step_ticks_);
  }

  Tick tick_;
  double ticks_per_unit_;
  int64_t lowest_tick_ = 0;
  int64_t step_ticks_ = 1;
  double step_price_;
  double total_volume_ = 0;
  std::vector<CloudData>& levels_;
};

}  // namespace quor
