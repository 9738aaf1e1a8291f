// The formulas of some words and indicators as loops over arrays: the yardstick of the engine.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace quor_bench {

using Series = std::vector<double>;

/// The bars that a script reads, as columns.
struct Bars {
  Series open;
  Series high;
  Series low;
  Series close;
  Series volume;

  size_t size() const { return close.size(); }
};

enum class Kind { average, statistic, extreme, arithmetic, look_back, indicator };

/// A script and what its last line comes to.
struct Yardstick {
  Kind kind;
  std::string_view name;
  std::string_view script;
  void (*loop)(const Bars& bars, Series& last_line);
};

std::span<const Yardstick> yardsticks();

}  // namespace quor_bench
