// The text of rows, for a script that the first byte picks. Rows come in the order of their keys,
// no key twice, and the same text once more changes nothing.
#include <iterator>
#include <limits>

#include "fuzz_host.h"

using namespace quor_fuzz;

namespace {

constexpr std::string_view scripts[] = {
    "A:C;",
    "A:MA(C,2)+O-H*L;B:V;",
    "A:\"600000$C\";B:\"MIN$5$V\";",
    "A:REF(C,1);B:BARPOS;C1:DATE;",
};

/// Cells of column 1 hold the keys as numbers, so great keys may look alike.
void expect_order(const FuzzHost& host) {
  double before = 0;
  for (uint32_t row = 0; row < get_row_num(host.handle()); ++row) {
    const double key = get_data_by_col_row(host.handle(), static_cast<int32_t>(row), 1);
    expect(key >= before && key >= 1, "the order of the rows");
    before = key;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  set_quiet_handlers();
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (input.empty()) return 0;
  const FuzzHost host;
  host.compile(scripts[static_cast<uint8_t>(input[0]) % std::size(scripts)]);
  for (const std::string_view text : parts_of(input.substr(1))) {
    host.feed(text);
    expect_order(host);
    const std::string cells = host.table();
    host.feed(text);
    expect(host.table() == cells, "the same cells for the same rows");
  }
  host.run(0);
  host.run(1, true);
  host.read_everything();
  return 0;
}
