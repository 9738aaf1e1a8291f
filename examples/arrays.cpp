// A feed by arrays: a history in columns, then bars one by one, no text in between. For the engine
// as a static library, whose form may change from version to version.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace {

using quor::engine::Script;

constexpr uint32_t close_column = 11;

/// What a feed hands over: a key and a close for each bar.
struct Feed {
  std::vector<int64_t> keys;
  std::vector<double> closes;
};

bool take(Script& script, const Feed& feed) {
  const quor::engine::Field close{close_column, feed.closes};
  const uint32_t first = script.row_count();
  script.set_rows(feed.keys, {&close, 1});
  // A bar that is known changes from its own row on, others come behind the last.
  const uint32_t row = script.row_of(feed.keys.front()).value_or(first);
  const bool with_events = first > 0;
  const quor::engine::Failure failure = script.calculate(row, with_events);
  if (failure) std::fprintf(stderr, "error %d: %s\n", failure.code, failure.text.c_str());
  return !failure;
}

void show(const Script& script) {
  const uint32_t last = script.row_count() - 1;
  std::printf("%lld", static_cast<long long>(script.key_of(last)));
  for (const quor::engine::Line& line : script.lines()) {
    const double value = script.column(line.column)[last];
    if (std::isnan(value)) {
      std::printf(" %s null", line.name.c_str());
    } else {
      std::printf(" %s %.2f", line.name.c_str(), value);
    }
  }
  for (const quor::engine::Event& event : script.events())
    std::printf(" [%s %s]", event.word.c_str(), event.name.c_str());
  std::printf("\n");
}

}  // namespace

int main() {
  quor::engine::Settings settings;
  settings.parameters = {{"N", 2}};
  Script script("AVG:MA(C,N); CROSS(C,AVG),NOTICE('up');", settings);
  if (script.report().failure) return 1;

  const Feed feeds[] = {
      {{20240102000000, 20240103000000, 20240104000000}, {12, 10, 9}},
      {{20240104000000}, {11}},  // the last bar, while it forms
      {{20240104000000}, {13}},
      {{20240105000000}, {14}},
  };
  for (const Feed& feed : feeds) {
    if (!take(script, feed)) return 1;
    show(script);
  }
}
