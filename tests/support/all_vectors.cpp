#include <algorithm>
#include <filesystem>
#include <iterator>

#include "support/vectors.h"

namespace quor_test {

std::vector<Vector> load_vectors() {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(QUOR_VECTORS)) {
    if (entry.path().extension() == ".txt") paths.push_back(entry.path().string());
  }
  std::ranges::sort(paths);
  std::vector<Vector> vectors;
  for (const auto& path : paths) {
    std::ranges::move(vectors_of(path), std::back_inserter(vectors));
  }
  return vectors;
}

}  // namespace quor_test
