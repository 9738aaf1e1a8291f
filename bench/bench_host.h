// An instance and made-up bars to measure with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "plain_loops.h"

namespace quor_bench {

class BenchHost {
 public:
  BenchHost();
  ~BenchHost();
  BenchHost(const BenchHost&) = delete;
  BenchHost& operator=(const BenchHost&) = delete;

  /// Ends the program with the report if the script has an error, as the next two do: a failure
  /// must not pass for a quick run.
  void compile(std::string_view script) const;
  void feed(std::string_view rows) const;
  void calculate(uint32_t first_row) const;
  /// The same for a script that has been calculated before, as quick as a host can: nobody looks at
  /// the answer.
  void calculate_unread(uint32_t first_row) const;
  /// Writes over a result of a bar, after which a run over that bar leaves no statement out.
  void touch(uint32_t row) const;
  void clear() const;
  uint32_t row_count() const;
  uint32_t column_count() const;
  /// The column of a line by its name in capitals.
  int32_t column_of(std::string_view line) const;
  double value(uint32_t row, int32_t column) const;
  /// The text of a column; ends the program if there is none.
  size_t text_size(int32_t column) const;

 private:
  int64_t handle_;
};

/// The order in which bars stand in a text.
enum class Order { ascending, descending, shuffled };

/// Bars `first` up to but excluding `last` of a random walk, the same in every run: minutes of a
/// trading day of four hours, with open, high, low, close and volume.
std::string random_walk(size_t first, size_t last, Order order = Order::ascending);

/// The fields of the instance's rows, as the engine has taken them in.
Bars bars_of(const BenchHost& host);

}  // namespace quor_bench
