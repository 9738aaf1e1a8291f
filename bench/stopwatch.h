// How long a piece of work takes, by the processor's own clock: what else the machine does counts
// for little.
#pragma once

#include <algorithm>
#include <ctime>
#include <limits>

namespace quor_bench {

/// The quickest of at least five rounds, in seconds. Short work goes on for a twentieth of a
/// second.
template <typename Work>
double quickest(const Work& work) {
  constexpr double long_enough = 0.05;
  double best = std::numeric_limits<double>::infinity();
  double total = 0.0;
  for (int round = 0; round < 5 || total < long_enough; ++round) {
    const std::clock_t start = std::clock();
    work();
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    best = std::min(best, seconds);
    total += std::max(seconds, 1e-6);
  }
  return best;
}

/// As `quickest`, per item, for work that is too short for the clock and so is done many times.
template <typename Work>
double quickest_of_many(int times, const Work& work) {
  return quickest([&] {
           for (int i = 0; i < times; ++i) work();
         }) /
         times;
}

}  // namespace quor_bench
