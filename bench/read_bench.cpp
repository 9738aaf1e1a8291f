// Reads and parses files of bars as `quor scan` does, and nothing else: the yardstick of the scan.
//   read_bench FOLDER...
#include <cstdio>
#include <exception>

#include "input/bars.h"
#include "scan/scan_job.h"

int main(int argc, char** argv) {
  try {
    size_t bars = 0;
    for (const std::string& path : quor_host::bar_files({argv + 1, argv + argc})) {
      bars += quor_host::read_bars(path).keys.size();
    }
    std::printf("%zu bars\n", bars);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "read_bench: %s\n", error.what());
    return 1;
  }
}
