// What the user may say about a picture.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quor_host {

struct ChartOptions {
  std::string path;
  std::string theme = "light";
  size_t last = 120;
  std::vector<int> size = {1200, 800};  ///< width and height
  bool no_volume = false;
};

void add_chart_options(CLI::App& command, ChartOptions& options);

}  // namespace quor_host
