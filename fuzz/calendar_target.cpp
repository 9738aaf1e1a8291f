// A trading calendar and the keys of bars that it maps: the calendar's text, then keys with commas
// between them.
#include <string>

#include "calendar/trade_day_cache.h"
#include "fuzz_host.h"

using namespace quor_fuzz;

namespace {

constexpr std::string_view script =
    "A:DATE;B:TIME;C1:WEEKDAY;D:DATE<>REF(DATE,1);E:TIME0;F:DAY+MONTH+YEAR+HOUR+MINUTE;";

std::string& calendar() {
  static std::string text;
  return text;
}

const char* answer_trade_dates(const char*, const char*, const char*, const char*, int32_t*) {
  return calendar().c_str();
}

void feed_keys(const FuzzHost& host, std::string_view keys) {
  std::string json = "[{\"1\":";
  for (const char c : keys) json += c == ',' ? "},{\"1\":" : std::string(1, c);
  host.feed(json + "}]");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  set_quiet_handlers();
  set_get_trade_dates_callback(answer_trade_dates);
  auto parts = parts_of({reinterpret_cast<const char*>(data), size});
  parts.resize(2);
  calendar() = parts[0];
  const FuzzHost host;
  host.set_info({0x3001, "IF2401", "CFFEX"});
  host.compile(script);
  feed_keys(host, parts[1]);
  // The first run may find the calendar faulty and drop it in the middle.
  host.run(0);
  host.run(0);
  const std::string cells = host.table();
  host.run(0);
  expect(host.table() == cells, "the same dates in every further run");
  // The next input brings a calendar of its own.
  quor::trade_day_help::drop_model(quor::trade_day_help::cache_key("IF2401", "CFFEX"));
  return 0;
}
