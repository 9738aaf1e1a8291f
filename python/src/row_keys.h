// Row keys and the times of numpy.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace quor_python {

/// A time of numpy that is none.
inline constexpr int64_t no_time = std::numeric_limits<int64_t>::min();

/// The row key of each time, a count of ticks since 1970, of which `ticks` make a second: 1 or a
/// thousand to the first, second or third power. Parts of a second are dropped. Throws
/// std::invalid_argument for a time that is none and for years that have no four digits. Needs no
/// interpreter.
void fill_keys(std::span<const int64_t> times, int64_t ticks, std::vector<int64_t>& keys);

/// The seconds since 1970 that a row key spells. Needs no interpreter.
int64_t seconds_of_key(int64_t key);

/// The seconds since 1970 of each row key. Needs no interpreter.
std::vector<int64_t> seconds_of_keys(std::span<const int64_t> keys);

}  // namespace quor_python
