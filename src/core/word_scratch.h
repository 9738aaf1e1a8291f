// Memory that words reuse from bar to bar, so that no bar allocates.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace quor {

/// A word may run inside an evaluation of another one that has values in here, so each word pushes
/// behind what it finds and cuts back to it when it is done.
struct WordScratch {
  std::vector<double> values;
};

}  // namespace quor
