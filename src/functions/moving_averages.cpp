// The averages that carry their value from bar to bar in a column of the table.
#include <cstdlib>

#include "core/call.h"
#include "core/column_owners.h"
#include "functions/averaging.h"
#include "functions/recurrence.h"
#include "functions/word_steps.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The plain average of N bars.
class MA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (!call.scan) return call.answer(moving_average(call));
    const Status status = scan_unchecked_period(call, 2, 1);
    return failed(status) ? status : call.answer(null_value);
  }
  const double* column(const ColumnCall& call) const override { return moving_average(call); }
  bool can_run_side_by_side(const ColumnCall& call) const override { return can_average(call); }
  bool run_side_by_side(std::span<const ColumnCall> calls) const override {
    return moving_averages(calls);
  }
  ColumnTraits column_traits() const override {
    return {.side_by_side = true, .series = SeriesPlace::own_column};
  }
};

/// The weight 2/(N+1). A null is written as it is, so that the next value starts over.
struct ExponentialStep {
  static constexpr size_t parameters = 1;
  static constexpr bool ignores_status = true;
  int64_t n = 0;

  static Status scan(const Call& call) {
    if (call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    ignore_status(call.evaluate_passing_scan(1, period));
    call.script().raise_period(to_int(period));
    return call.answer(null_value);
  }
  bool take(size_t, double period, const DataTable&) {
    n = to_int(period);
    return !is_null(period) && n != 0;
  }
  static double first(double x) { return x; }
  double next(double x, double prev) const {
    const double y = exponential_step(n, x, prev);
    if (!is_null(y)) [[likely]]
      return y;
    return is_null(x) ? x : is_null(prev) ? exponential_step(n, x, x) : y;
  }
  std::optional<WeightedStep> weighted() const {
    if (n < 0) return std::nullopt;
    return WeightedStep(n - 1, 2, n + 1);
  }
};

using EMA = Recurrence<ExponentialStep>;
using EXPMA = Recurrence<ExponentialStep>;

/// As EMA where the table has the N bars at all.
struct BoundedExponentialStep : ExponentialStep {
  static Status scan(const Call& call) { return call.check_count(2); }
  bool take(size_t, double period, const DataTable& table) {
    n = to_int(period);
    return n >= 1 && n <= table.row_count();
  }
};

using EMAWH = Recurrence<BoundedExponentialStep>;

/// The weight M/N; a null keeps the value before.
struct SmoothingStep {
  static constexpr size_t parameters = 2;
  static constexpr bool ignores_status = false;
  int32_t n = 0;
  int32_t m = 0;

  static Status scan(const Call& call) {
    if (call.argument_count() != 3) return call.wrong_count();
    double period = null_value;
    Status status = call.evaluate_passing_scan(1, period);
    if (failed(status)) return status;
    if (to_int(period) < 1) return call.answer(null_value);
    double weight = null_value;
    status = call.evaluate(2, weight);
    if (failed(status)) return status;
    call.script().raise_period(to_int(period));
    call.script().raise_period(to_int(weight));
    return Status::ok;
  }
  bool take(size_t position, double value, const DataTable&) {
    (position == 1 ? n : m) = to_int(value);
    return n >= 1;
  }
  static double first(double x) { return x; }
  double next(double x, double prev) const { return smoothing_step(x, prev, n, m); }
  std::optional<WeightedStep> weighted() const {
    const int64_t old_weight = int64_t{n} - m;
    if (std::abs(old_weight) > WeightedStep::largest) return std::nullopt;
    return WeightedStep(old_weight, m, n);
  }
};

using SMA = Recurrence<SmoothingStep>;

/// (x - prev) * A + prev. A null is written, so that the next bar starts over.
struct WeightStep {
  static constexpr size_t parameters = 1;
  static constexpr bool ignores_status = false;
  double weight = 0.0;

  static Status scan(const Call& call) { return scan_period(call, 2, 1); }
  bool take(size_t, double value, const DataTable&) {
    weight = value;
    return !is_null(value);
  }
  double first(double x) const { return next(x, x); }
  double next(double x, double prev) const {
    if (is_null(prev)) prev = x;
    return (x - prev) * weight + prev;
  }
};

using AMA = Recurrence<WeightStep>;

/// (1-A) * prev + A*x for a weight strictly between 0 and 1. Such a weight asks for no look-back.
struct FractionStep {
  static constexpr size_t parameters = 1;
  static constexpr bool ignores_status = false;
  double weight = 0.0;

  static Status scan(const Call& call) {
    if (call.argument_count() != 2) return call.wrong_count();
    double value = null_value;
    const Status status = call.evaluate(1, value);
    if (failed(status)) return status;
    return value > 0.0 && value < 1.0 ? Status::ok : call.answer(null_value);
  }
  bool take(size_t, double value, const DataTable&) {
    weight = value;
    return value > 0.0 && value < 1.0;
  }
  static double first(double x) { return x; }
  double next(double x, double prev) const {
    if (is_null(x)) return x;
    return (1.0 - weight) * (is_null(prev) ? x : prev) + x * weight;
  }
};

using DMA = Recurrence<FractionStep>;

/// A*prev + B*x. Nothing starts it over: behind a null all bars are null.
struct TwoWeightsStep {
  static constexpr size_t parameters = 2;
  static constexpr bool ignores_status = false;
  double old_weight = 0.0;
  double new_weight = 0.0;

  static Status scan(const Call& call) { return call.check_count(3); }
  bool take(size_t position, double value, const DataTable&) {
    (position == 1 ? old_weight : new_weight) = value;
    return to_int(value) < 2;
  }
  double first(double x) const { return x * new_weight; }
  double next(double x, double prev) const { return x * new_weight + prev * old_weight; }
};

using TMA = Recurrence<TwoWeightsStep>;

/// An average that starts from a sum over X's own column, where it has one. An X without a column
/// seeds nothing, and so has no average.
template <typename Step>
class SeededAverage : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  const double* column(const ColumnCall& call) const final {
    const std::optional<double> period = call.number(1);
    if (!period) return nullptr;
    const int64_t n = to_int(*period);
    if (!Step::takes(*period, n)) return call.everywhere(null_value);
    const bool is_seeded = call.variable.has_column() && call.rows.first >= n - 1;
    const double* x = is_seeded ? call.values(0) : nullptr;
    if (x == nullptr) return nullptr;
    const auto series = call.table().cells(call.argument(0)->column_index);
    double* y = call.overwrite(call.variable.column_index);
    for (int32_t row = call.rows.first; row < call.rows.end; ++row) {
      const auto i = static_cast<ptrdiff_t>(row) - call.rows.first;
      const WindowSeed seed = window_seed(series, y[i - 1], int64_t{row} - 1, n);
      if (is_null(seed.sum)) return nullptr;
      y[i] = Step::next(x[i], seed);
    }
    return y;
  }
  ColumnTraits column_traits() const final {
    return {.starts_late = true, .keeps_results = true, .series = SeriesPlace::as_it_stands};
  }

 protected:
  /// A bar that has no seed writes nothing.
  static Status average(const Call& call, int64_t n) {
    double x = null_value;
    const Status status = call.evaluate(0, x);
    if (failed(status) && !Step::ignores_status) return status;
    const DataTable& table = call.table();
    const int64_t before = int64_t{call.row} - 1;
    const WindowSeed seed = window_seed(table.cells(call.argument(0).column_index),
                                        table.cell(before, call.variable.column_index), before, n);
    if (is_null(seed.sum)) return call.answer(null_value);
    return call.answer(stored(call, result_column(call), Step::next(x, seed)));
  }
};

/// The weight 1/N, seeded by a mean.
struct MeanSeededStep {
  static constexpr bool ignores_status = true;

  static bool takes(double, int64_t n) { return n >= 1; }
  static double next(double x, const WindowSeed& seed) {
    const double prev = seed.recomputed ? seed.sum / static_cast<double>(seed.count) : seed.sum;
    return smoothing_step(x, prev, seed.count, 1);
  }
};

class MEMA final : public SeededAverage<MeanSeededStep> {
 public:
  using SeededAverage::SeededAverage;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    ignore_status(call.evaluate(1, period));
    const int64_t n = to_int(period);
    if (n < 1 || call.row < n - 1) return call.answer(null_value);
    if (!call.scan) return average(call, n);
    call.script().raise_period(to_int(period));
    return Status::ok;
  }
};

/// The weight 2/(N+1), seeded by a sum. A null makes a bar of 0.
struct SumSeededStep {
  static constexpr bool ignores_status = false;

  static bool takes(double period, int64_t n) { return !is_null(period) && n != 0; }
  static double next(double x, const WindowSeed& seed) {
    const double prev =
        seed.recomputed ? seed.sum * 2.0 / static_cast<double>(seed.count + 1) : seed.sum;
    return is_null(x) ? 0.0 : exponential_step(seed.count, x, prev);
  }
};

class EXPMEMA final : public SeededAverage<SumSeededStep> {
 public:
  using SeededAverage::SeededAverage;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    if (const Status status = call.evaluate_passing_scan(1, period); failed(status)) return status;
    const int64_t n = to_int(period);
    if (call.scan) {
      call.script().raise_period(to_int(period));
      return Status::ok;
    }
    if (!SumSeededStep::takes(period, n) || call.row < n - 1) return call.answer(null_value);
    return average(call, n);
  }
};

/// The average of an average, both over about half of N bars.
class TRMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    if (const Status status = call.evaluate(1, period); failed(status)) return status;
    const int32_t n = to_int(period);
    if (n < 1) return call.answer(null_value);
    if (call.scan) {
      call.script().raise_period(n);
      return Status::ok;
    }
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    reserve(call);
    return call.answer(average(call.table(), averages_of(call.variable), call.row, half_of(n), x));
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    if (!period) return nullptr;
    const int32_t n = to_int(*period);
    if (n < 1) return call.everywhere(null_value);
    const TwoAverages averages = averages_of(call.variable);
    const bool has_columns = held_column(call.variable, outer_count) != -1 &&
                             call.variable.has_column() && call.argument(0)->has_column();
    if (!has_columns) return nullptr;
    const double* x = call.stored(0, averages.inner.series);
    if (x == nullptr) return nullptr;
    for (const AverageColumns& columns : {averages.inner, averages.outer}) {
      call.overwrite(columns.result);
      call.overwrite(columns.count);
    }
    return call.each_row([&](int32_t row) {
      return average(call.table(), averages, row, half_of(n), x[row - call.rows.first]);
    });
  }
  ColumnTraits column_traits() const override {
    return {.keeps_results = true, .series = SeriesPlace::own_column};
  }

 private:
  enum : size_t { x_place, result_place, outer_count, inner_average, inner_count, places };

  /// 3 for both 4 and 5.
  static int64_t half_of(int64_t n) { return n % 2 != 0 ? (n + 1) / 2 : n / 2 + 1; }

  static void reserve(const Call& call) {
    Variable& variable = call.variable;
    Variable& x = call.argument(0);
    if (variable.aux_column_ids.empty()) reserve_columns(variable, places);
    if (!x.has_column()) hand_over_column(variable, x_place, x);
    if (!variable.has_column()) hand_over_column(variable, result_place, variable);
  }

  struct TwoAverages {
    AverageColumns inner;
    AverageColumns outer;
  };

  static TwoAverages averages_of(const Variable& call) {
    const AverageColumns inner{call.arguments[0]->column_index, held_column(call, inner_average),
                               held_column(call, inner_count)};
    return {inner, {inner.result, call.column_index, held_column(call, outer_count)}};
  }

  static double average(DataTable& table, const TwoAverages& averages, int32_t row, int64_t k,
                        double x) {
    const auto& [inner, outer] = averages;
    table.set_cell(row, inner.series, x);
    if (row >= k - 1) {
      const AverageStep first = sliding_average(table, inner, row, x, k, k);
      return sliding_average(table, outer, row, first.value, first.count, k).value;
    }
    for (const AverageColumns& columns : {inner, outer}) {
      table.set_cell(row, columns.result, null_value);
      table.set_cell(row, columns.count, static_cast<double>(k));
    }
    return null_value;
  }
};

constexpr WordRow moving_average_rows[] = {
    word_row<MA>("MA", 73, steady | has_result_column | period_at(1)),
    word_row<EMA>("EMA", 196, steady | has_result_column | period_at(1)),
    word_row<EXPMA>("EXPMA", 27, steady | has_result_column | period_at(1)),
    word_row<EMAWH>("EMAWH", 178, repeatable | follows_rows | period_at(1)),
    word_row<SMA>("SMA", 62, steady | has_result_column | period_at(1)),
    word_row<AMA>("AMA", 46, steady | has_result_column),
    word_row<DMA>("DMA", 49, steady | has_result_column),
    word_row<TMA>("TMA", 70, steady | has_result_column),
    word_row<MEMA>("MEMA", 38, steady | has_result_column | period_at(1)),
    word_row<EXPMEMA>("EXPMEMA", 13, steady | has_result_column | period_at(1)),
    word_row<TRMA>("TRMA", 193, steady | period_at(1)),
};

}  // namespace

std::span<const WordRow> moving_average_words() { return moving_average_rows; }

}  // namespace quor
