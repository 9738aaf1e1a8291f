// The greatest and the smallest value of a window, and how long ago it was. Values are compared
// from the oldest on, strictly, so that a null in the oldest place stays and a later one is passed.
#include <functional>

#include "functions/families.h"
#include "functions/series.h"
#include "functions/word_steps.h"

namespace quor {
namespace {

/// Where the value stands that no other one beats; the oldest of equal ones. 0 for no values.
template <typename Beats>
size_t extreme_place(const Window& window) {
  if (window.empty()) return 0;
  size_t place = 0;
  double best = window[0];
  for (size_t i = 1; i < window.size(); ++i) {
    if (Beats()(window[i], best)) {
      best = window[i];
      place = i;
    }
  }
  return place;
}

/// 0 for no values.
template <typename Beats>
double extreme_value(const Window& window) {
  return window.empty() ? 0.0 : window[extreme_place<Beats>(window)];
}

template <typename Beats>
double bars_since_extreme(const Window& window) {
  return window.empty() ? 0.0
                        : static_cast<double>(window.size() - 1 - extreme_place<Beats>(window));
}

/// Evaluates X at the call's row, stores it where it has no column, and takes its window.
int take_window(const Call& call, int32_t n, Window& window) {
  double x = null_value;
  if (const int status = call.evaluate(0, x); status != 0) return status;
  const int32_t column = store_in_aux_of_argument(call, call.argument(0), x);
  window = call.table().window(column, call.row, n);
  return 0;
}

/// A window of no bars answers with 0, a negative one with null.
template <typename Beats>
int extreme_at(const Call& call) {
  double period = null_value;
  if (const int status = call.evaluate(1, period); status != 0) return status;
  const int32_t n = to_int(period);
  if (n < 0) return answer(call, null_value);
  Window window;
  if (const int status = take_window(call, n, window); status != 0) return status;
  return answer(call, extreme_value<Beats>(window));
}

template <typename Beats>
class Extreme : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  int execute(const Call& call) const final {
    return call.scan ? scan_period(call, 2, 1) : extreme_at<Beats>(call);
  }
};

template <typename Beats>
class BarsSinceExtreme : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  int execute(const Call& call) const final {
    if (call.scan) return scan_period(call, 2, 1);
    double period = null_value;
    if (const int status = call.evaluate(1, period); status != 0) return status;
    Window window;
    if (const int status = take_window(call, to_int(period), window); status != 0) return status;
    return answer(call, bars_since_extreme<Beats>(window));
  }
};

/// The extreme of the bars before this one, with the period of the bar before.
template <typename Beats>
class EarlierExtreme : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  int execute(const Call& call) const final {
    if (call.scan) return scan_count(call, 2);
    double period = null_value;
    if (const int status = call.evaluate(1, period); status != 0) return status;
    if (call.row < 1 || is_null(period)) return answer(call, null_value);
    return extreme_at<Beats>(
        {call.pool, call.calculator, call.variable, call.row - 1, false, call.error, call.result});
  }
};

using Greater = std::greater<>;
using Less = std::less<>;

// clang-format off
class HHV final : public Extreme<Greater> { using Extreme::Extreme; };
class LLV final : public Extreme<Less> { using Extreme::Extreme; };
class HHVBARS final : public BarsSinceExtreme<Greater> { using BarsSinceExtreme::BarsSinceExtreme; };
class LLVBARS final : public BarsSinceExtreme<Less> { using BarsSinceExtreme::BarsSinceExtreme; };
class HV final : public EarlierExtreme<Greater> { using EarlierExtreme::EarlierExtreme; };
class LV final : public EarlierExtreme<Less> { using EarlierExtreme::EarlierExtreme; };
// clang-format on

constexpr WordRow words[] = {
    word_row<HHV>("HHV"),         word_row<LLV>("LLV"), word_row<HHVBARS>("HHVBARS"),
    word_row<LLVBARS>("LLVBARS"), word_row<HV>("HV"),   word_row<LV>("LV"),
};

}  // namespace

std::span<const WordRow> extreme_words() { return words; }

}  // namespace quor
