// The shape of a word that looks at the last N values of an argument anew at each bar.
#pragma once

#include <algorithm>
#include <optional>
#include <span>

#include "core/base_func.h"
#include "core/call.h"
#include "core/columns.h"
#include "functions/scratch_frame.h"

namespace quor {

/// A word of X, N and maybe more numbers, null before the first full window. `Word` says what is
/// its own:
///
///     static Status scan(const Call& call);
///     static constexpr size_t parameters;        // the arguments behind X, N first
///     bool take(size_t position, double value);  // a parameter, in order; false: the bar is null
///     int32_t bars() const;                      // of a window; below 1: the bar is null
///     static constexpr bool newest_first;        // how a bar comes to the values
///     static bool ends(double x);                // makes the bar null, others aren't looked at
///     static constexpr bool reorders;            // whether `value` changes the window
///     double value(std::span<double> x, int32_t row) const;  // of the window, the oldest first
///
/// Where a value ends the bar, a column has `value` see it and give null.
template <typename Word>
class LookBack final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return Word::scan(call);
    Word word;
    for (size_t position = 1; position <= Word::parameters; ++position) {
      double value = null_value;
      if (const Status status = call.evaluate(position, value); failed(status)) return status;
      if (!word.take(position, value)) return call.answer(null_value);
    }
    const int32_t n = word.bars();
    if (n < 1 || call.row < n - 1) return call.answer(null_value);
    ScratchFrame window(call.calculator);
    for (int32_t i = 0; i < n; ++i) {
      double x;
      const int32_t row = Word::newest_first ? call.row - i : call.row - n + 1 + i;
      if (const Status status = call.recall(0, row, x); failed(status)) return status;
      if (Word::ends(x)) return call.answer(null_value);
      window.push(x);
    }
    if (Word::newest_first) std::ranges::reverse(window.values());
    return call.answer(word.value(window.values(), call.row));
  }

  const double* column(const ColumnCall& call) const override {
    Word word;
    for (size_t position = 1; position <= Word::parameters; ++position) {
      const std::optional<double> value = call.number(position);
      if (!value) return nullptr;
      if (!word.take(position, *value)) return call.everywhere(null_value);
    }
    const int32_t n = word.bars();
    if (n < 1 || call.rows.end < n) return call.everywhere(null_value);
    if (call.rows.first < n - 1) return nullptr;
    const double* x = call.values(0, {call.rows.first - n + 1, call.rows.end});
    if (x == nullptr) return nullptr;
    x -= call.rows.first;
    const auto size = static_cast<size_t>(n);
    if constexpr (Word::reorders) {
      double* const window = call.columns.scratch(size);
      return call.each_row([&word, x, window, size](int32_t row) {
        std::copy_n(x + row, size, window);
        return word.value(std::span(window, size), row);
      });
    } else {
      return call.each_row(
          [&word, x, size](int32_t row) { return word.value(std::span(x + row, size), row); });
    }
  }

  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .passes_over = true, .revisits = true};
  }
};

}  // namespace quor
