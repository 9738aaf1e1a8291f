// A script with its two settings texts: compiled twice, run over a few bars, read. The parts of the
// input are the script, the parameters, the lines, and one byte that picks security and period.
#include "fuzz_host.h"

using namespace quor_fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  set_quiet_handlers();
  auto parts = parts_of({reinterpret_cast<const char*>(data), size});
  parts.resize(4);
  const FuzzHost host;
  host.set_info(surroundings(parts[3].empty() ? 0 : static_cast<uint8_t>(parts[3][0])));
  const std::string report = host.compile(parts[0], parts[1], parts[2]);
  if (!parts[0].empty()) {
    expect(host.compile(parts[0], parts[1], parts[2]) == report, "the same report once more");
  }
  const size_t bars = bearable_bars(parts[0]);
  if (bars == 0) return 0;
  host.feed_bars(bars);
  host.run(0, true);
  host.run(2);
  host.run(100);
  host.read_everything();
  return 0;
}
