// Longer periods made of shorter bars.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bars.h"

namespace quor_bars {

/// Whether bars of the one period hold several of the other.
bool is_longer(uint32_t period, uint32_t than);

/// The bars of a longer period, each dated as the first one that it is made of: the first open, the
/// highest high, the lowest low, the sums of volume and amount, of all else the last value. Nulls
/// are passed over; what has nothing else is null. Days end at midnight, weeks on Sunday, and
/// periods within the day count from midnight on. The keys must ascend.
Bars resampled(const Bars& bars, uint32_t period);

/// At each bar from `first` on, what a field of the last longer bar is that is over, null before
/// there is one. None of it changes as bars come. The keys must ascend and the field be there.
std::vector<double> last_finished(const Bars& bars, uint32_t field, uint32_t period, size_t first);

/// The same of the longer bar that each bar lies in, as far as it has come with that bar.
std::vector<double> under_way(const Bars& bars, uint32_t field, uint32_t period, size_t first);

}  // namespace quor_bars
