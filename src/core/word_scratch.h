// Memory that words reuse from bar to bar, so that no bar allocates.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace quor {

/// One price level of the chip distribution. Levels that no bar has reached have a null price.
struct CloudData {
  double price;
  double volume;
};

/// A word may run inside an evaluation of another one that has values in here, so each word pushes
/// behind what it finds and cuts back to it when it is done.
struct WordScratch {
  std::vector<double> values;
  /// The levels of the bar's distribution, lowest first. Nothing is evaluated while one is in use,
  /// so each build takes all of it.
  std::vector<CloudData> cloud;
};

}  // namespace quor
