// An instance and made-up bars to measure with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

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
  void clear() const;
  uint32_t row_count() const;

 private:
  int64_t handle_;
};

/// The order in which bars stand in a text.
enum class Order { ascending, descending, shuffled };

/// Bars `first` up to but excluding `last` of a random walk, the same in every run: minutes of a
/// trading day of four hours, with open, high, low, close and volume.
std::string random_walk(size_t first, size_t last, Order order = Order::ascending);

}  // namespace quor_bench
