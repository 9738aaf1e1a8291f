// The averages that go over their window again at every bar.
#include <cmath>

#include "core/call.h"
#include "functions/averaging.h"
#include "functions/look_back.h"
#include "functions/over_window.h"
#include "functions/power.h"
#include "functions/series.h"
#include "functions/word_steps.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The values weighted by 1, 2, 3 ... from the oldest, over the sum of the weights that a full
/// window has.
class WeightedMean {
 public:
  static constexpr bool in_lanes = true;

  explicit WeightedMean(int32_t n)
      : weights_(static_cast<double>((int64_t{n} + 1) * int64_t{n}) * 0.5) {}

  template <typename W>
  Number<W> operator()(const W& window) const {
    Number<W> sum{};
    double weight = 0.0;
    for (size_t i = 0; i < window.size(); ++i) sum += (weight += 1.0) * window[i];
    return sum;
  }
  double finish(double sum) const {
    const double mean = sum / weights_;
    return is_null(sum) ? null_value : mean;
  }
  template <typename Part>
  Lanes<Part> finish(const Lanes<Part>& sums) const {
    return each_lane(sums, [this](double sum) { return finish(sum); });
  }

 private:
  double weights_;
};

/// With a look-back of N.
struct WeightedMeanBack : WeightedMean {
  using WeightedMean::WeightedMean;
  static Status scan(const Call& call) {
    const Status status = scan_unchecked_period(call, 2, 1);
    return failed(status) ? status : call.answer(null_value);
  }
};
struct WeightedMeanOnly : WeightedMean {
  using WeightedMean::WeightedMean;
  static Status scan(const Call& call) { return call.check_count(2); }
};

constexpr WindowRule weighted = {.gate = Gate::full_window,
                                 .stores_before_gate = true,
                                 .ignores_period_status = true,
                                 .ignores_status = true,
                                 .keeps_result = true};

using WMA = OverWindow<WeightedMeanBack, weighted>;
using EMA2 = OverWindow<WeightedMeanOnly, weighted>;

/// The mean of the window with its last value counted on: (sum - sum/p + x) / p.
class SMMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    double period = null_value;
    if (const Status status = call.evaluate(1, period); failed(status)) return status;
    if (!is_count(period) || period - 1.0 > call.row) return call.answer(null_value);
    const int32_t p = to_int(std::ceil(period));
    double sum = 0.0;
    if (const Status status = add_up(call, p, sum); failed(status)) return status;
    return call.answer(mean(sum, p, x));
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    const double* x = period ? call.values(0) : nullptr;
    if (x == nullptr) return nullptr;
    if (!is_count(*period) || *period - 1.0 > call.rows.end - 1) return call.everywhere(null_value);
    if (*period - 1.0 > call.rows.first) return nullptr;
    const int32_t p = to_int(std::ceil(*period));
    const bool from_oldest = call.argument(0)->has_column();
    const Block windows{call.rows.first - (p - 1), call.rows.end};
    const double* values = from_oldest ? call.cells(call.argument(0)->column_index) + windows.first
                                       : call.values(0, windows);
    if (values == nullptr) return nullptr;
    return call.each_row([&call, p, x, from_oldest, values](int32_t row) {
      const double* window = values + (row - call.rows.first);
      double sum = 0.0;
      for (int32_t i = 0; i < p; ++i) sum += window[from_oldest ? i : p - 1 - i];
      return mean(sum, p, x[row - call.rows.first]);
    });
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .revisits = true, .series = SeriesPlace::as_it_stands};
  }

 private:
  static bool is_count(double period) { return !is_null(period) && std::round(period) > 0.0; }

  static double mean(double sum, int32_t p, double x) { return (sum - sum / p + x) / p; }

  /// The order of the sum depends on where the values lie: a column is summed from the oldest, an
  /// expression from the newest.
  static Status add_up(const Call& call, int32_t count, double& sum) {
    const Variable& argument = call.argument(0);
    if (argument.has_column()) {
      const Window window = call.table().window(argument.column_index, call.row, count);
      for (size_t i = 0; i < window.size(); ++i) sum += window[i];
      return Status::ok;
    }
    for (int32_t back = 0; back < count; ++back) {
      double value;
      if (const Status status = call.recall(0, call.row - back, value); failed(status)) {
        return status;
      }
      sum += value;
    }
    return Status::ok;
  }
};

/// The regression line through the window, one bar ahead.
struct RegressionAhead {
  static constexpr size_t parameters = 1;
  static constexpr bool newest_first = true;
  static constexpr bool reorders = false;
  int32_t n = 0;

  /// The trial run at row 0 never has a window.
  static Status scan(const Call& call) {
    if (call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    const Status status = call.evaluate(1, period);
    return failed(status) ? status : call.answer(null_value);
  }
  bool take(size_t, double period) { return (n = to_int(std::floor(period))) >= 2; }
  int32_t bars() const { return n; }
  static bool ends(double) { return false; }
  double value(std::span<const double> window, int32_t row) const {
    double x = 0.0;
    double t = 0.0;
    double tt = 0.0;
    double tx = 0.0;
    for (int32_t at = row; at > row - n; --at) {
      const double newer = window[static_cast<size_t>(at - row + n - 1)];
      x += newer;
      t += at;
      tt += wrapping_multiply(at, at);  // squares of rows wrap at 32 bits
      tx += at * newer;
    }
    const double mean = x / n;
    const double slope = (tx - mean * t) / (tt - t / n * t);
    return mean - slope * t / n + row * slope + slope;
  }
};
using TSMA = LookBack<RegressionAhead>;

/// An average whose weight grows with how straight the close went over N bars. From bar to bar it
/// carries a plain exponential average, not what it answers with.
class ADMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 4) return call.wrong_count();
    double x = null_value;
    double period = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    if (const Status status = call.evaluate(1, period); failed(status)) return status;
    const int32_t n = to_int(period);
    if (call.scan) {
      call.script().raise_period(n);
      return Status::ok;
    }
    if (n == 0) return call.answer(null_value);
    double fast = null_value;
    double slow = null_value;
    if (const Status status = call.evaluate(2, fast); failed(status)) return status;
    if (const Status status = call.evaluate(3, slow); failed(status)) return status;

    const int32_t column = result_column(call);
    const DataTable& table = call.table();
    const double prev = call.row == 0 ? x : table.cell(int64_t{call.row} - 1, column);
    stored(call, column, exponential_step(n, x, prev));
    return call.answer(adapted(table, call.row, n, x, prev, fast, slow));
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    const double* x = period ? call.values(0) : nullptr;
    if (x == nullptr) return nullptr;
    const int32_t n = to_int(*period);
    if (n == 0) return call.everywhere(null_value);
    const double* fast = call.values(2);
    const double* slow = call.values(3);
    if (n < 0 || fast == nullptr || slow == nullptr || !call.variable.has_column()) return nullptr;
    double* plain = call.overwrite(call.variable.column_index);
    return call.each_row([&](int32_t row) {
      const auto i = static_cast<ptrdiff_t>(row) - call.rows.first;
      const double prev = plain[i - 1];
      plain[i] = exponential_step(n, x[i], prev);
      return adapted(call.table(), row, n, x[i], prev, fast[i], slow[i]);
    });
  }
  ColumnTraits column_traits() const override {
    return {.passes_over = true, .passed_over_from = 2, .keeps_results = true};
  }

 private:
  static double adapted(const DataTable& table, int32_t row, int32_t n, double x, double prev,
                        double fast, double slow) {
    if (row < n) return null_value;
    const double rate = adaptive_weight(efficiency(table, row, n), fast, slow);
    return (x - prev) * rate + prev;
  }

  /// The way that the close made in n bars, over the length of the path that it took.
  static double efficiency(const DataTable& table, int32_t row, int32_t n) {
    const int32_t close = table.column_index_of(close_column_id);
    const double start = table.cell(int64_t{row} - n, close);
    const double change = std::fabs(table.cell(row, close) - start);
    const Window window = table.window(close, row, n);
    double noise = 0.0;
    double before = start;
    for (size_t i = 0; i < window.size(); ++i) {
      noise += std::fabs(window[i] - before);
      before = window[i];
    }
    return noise != 0.0 ? change / noise : 0.0;
  }

  static double adaptive_weight(double efficiency, double fast, double slow) {
    const double f = 2.0 / (fast + 1.0);
    const double s = 2.0 / (slow + 1.0);
    return power((f - s) * efficiency + s, 2.0);
  }
};

constexpr std::string_view close_field[] = {"CLOSE"};

constexpr WordRow windowed_average_rows[] = {
    word_row<WMA>("WMA", 71, steady | periods_from(1, can_fail) | has_result_column),
    word_row<EMA2>("EMA2", 177, steady | periods_from(1, can_fail) | has_result_column),
    word_row<SMMA>("SMMA", 189, steady | period_at(1)),
    word_row<TSMA>("TSMA", 194, steady | period_at(1)),
    word_row<ADMA>("ADMA", 93, steady | periods_from(1, can_fail), close_field),
};

}  // namespace

std::span<const WordRow> windowed_average_words() { return windowed_average_rows; }

}  // namespace quor
