// The averages that carry their value from bar to bar in a column of the table.
#include "core/call.h"
#include "core/column_owners.h"
#include "functions/averaging.h"
#include "functions/families.h"
#include "functions/word_steps.h"

namespace quor {
namespace {

/// What the bar before left in a column.
double previous(const Call& call, int32_t column) {
  return call.table().cell(int64_t{call.row} - 1, column);
}

/// As `previous`; where nothing stands the average starts with x.
double previous_or(const Call& call, int32_t column, double x) {
  const double value = previous(call, column);
  return is_null(value) ? x : value;
}

/// The plain average of N bars.
class MA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (!call.scan) return call.answer(moving_average(call));
    const Status status = scan_any_period(call, 2, 1);
    return failed(status) ? status : call.answer(null_value);
  }
};

/// The bar of an exponential average. A null is written as it is, so that the next value starts
/// over.
Status exponential_average(const Call& call, int64_t n) {
  double x = null_value;
  ignore_status(call.evaluate(0, x));
  const int32_t column = result_column(call);
  if (is_null(x) || call.row == 0) return call.answer(keep(call, column, x));
  const double y = exponential_step(n, x, previous_or(call, column, x));
  return call.answer(keep(call, column, y));
}

class EMA : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    ignore_status(call.evaluate_passing_scan(1, period));
    const int32_t n = to_int(period);
    if (call.scan) call.script().raise_period(n);
    if (call.scan || is_null(period) || n == 0) return call.answer(null_value);
    return exponential_average(call, n);
  }
};

class EXPMA final : public EMA {
 public:
  using EMA::EMA;
};

/// As EMA where the table has the N bars at all.
class EMAWH final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    double period = null_value;
    ignore_status(call.evaluate(1, period));
    const int32_t n = to_int(period);
    if (n < 1 || n > call.table().row_count()) return call.answer(null_value);
    return exponential_average(call, n);
  }
};

class SMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 3) return call.wrong_count();
    double period = null_value;
    if (const Status status = call.evaluate_passing_scan(1, period); failed(status)) return status;
    const int32_t n = to_int(period);
    if (n < 1) return call.answer(null_value);
    double weight = null_value;
    if (const Status status = call.evaluate(2, weight); failed(status)) return status;
    const int32_t m = to_int(weight);
    return call.scan ? scan(call, n, m) : average(call, n, m);
  }

 private:
  static Status scan(const Call& call, int32_t n, int32_t m) {
    call.script().raise_period(n);
    call.script().raise_period(m);
    return Status::ok;
  }

  static Status average(const Call& call, int32_t n, int32_t m) {
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const int32_t column = result_column(call);
    const double y = call.row == 0 ? x : smoothing_step(x, previous(call, column), n, m);
    return call.answer(keep(call, column, y));
  }
};

/// (x - prev) * A + prev. A null is written, so that the next bar starts over.
class AMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return scan_period(call, 2, 1);
    double weight = null_value;
    if (const Status status = call.evaluate(1, weight); failed(status)) return status;
    if (is_null(weight)) return call.answer(null_value);
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const int32_t column = call.variable.column_index;
    const double prev = call.row == 0 ? x : previous_or(call, column, x);
    return call.answer(keep(call, column, (x - prev) * weight + prev));
  }
};

/// (1-A) * prev + A*x for a weight strictly between 0 and 1. Such a weight asks for no look-back.
class DMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double weight = null_value;
    if (const Status status = call.evaluate(1, weight); failed(status)) return status;
    if (!(weight > 0.0 && weight < 1.0)) return call.answer(null_value);
    if (call.scan) return Status::ok;
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const int32_t column = result_column(call);
    if (is_null(x) || call.row == 0) return call.answer(keep(call, column, x));
    const double y = (1.0 - weight) * previous_or(call, column, x) + x * weight;
    return call.answer(keep(call, column, y));
  }
};

/// A*prev + B*x. Nothing starts it over: behind a null all bars are null.
class TMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(3);
    double old_weight = null_value;
    if (const Status status = call.evaluate(1, old_weight); failed(status)) return status;
    if (to_int(old_weight) >= 2) return call.answer(null_value);
    double new_weight = null_value;
    if (const Status status = call.evaluate(2, new_weight); failed(status)) return status;
    if (to_int(new_weight) >= 2) return call.answer(null_value);
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const int32_t column = call.variable.column_index;
    double y = x * new_weight;
    if (call.row != 0) y += previous(call, column) * old_weight;
    return call.answer(keep(call, column, y));
  }
};

/// The seed of an average over X's own column, where it has one. An X without a column seeds
/// nothing, and so has no average.
WindowSeed seed_of_argument(const Call& call, int64_t n) {
  return window_seed(call.table(), call.argument(0).column_index, call.variable.column_index,
                     static_cast<int64_t>(call.row) - 1, n, false);
}

/// The weight 1/N, seeded by a mean.
class MEMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    ignore_status(call.evaluate(1, period));
    const int64_t n = to_int(period);
    if (n < 1 || call.row < n - 1) return call.answer(null_value);
    if (call.scan) {
      call.script().raise_period(to_int(period));
      return Status::ok;
    }
    return average(call, n);
  }

 private:
  static Status average(const Call& call, int64_t n) {
    double x = null_value;
    ignore_status(call.evaluate(0, x));
    const WindowSeed seed = seed_of_argument(call, n);
    if (is_null(seed.sum)) return call.answer(null_value);
    const double prev = seed.recomputed ? seed.sum / static_cast<double>(seed.count) : seed.sum;
    const double y = smoothing_step(x, prev, seed.count, 1);
    return call.answer(keep(call, call.variable.column_index, y));
  }
};

/// The weight 2/(N+1), seeded by a sum. A null makes a bar of 0.
class EXPMEMA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    if (const Status status = call.evaluate_passing_scan(1, period); failed(status)) return status;
    const int64_t n = to_int(period);
    if (call.scan) {
      call.script().raise_period(to_int(period));
      return Status::ok;
    }
    if (is_null(period) || n == 0 || call.row < n - 1) return call.answer(null_value);
    return average(call, n);
  }

 private:
  static Status average(const Call& call, int64_t n) {
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const WindowSeed seed = seed_of_argument(call, n);
    if (is_null(seed.sum)) return call.answer(null_value);
    const double prev =
        seed.recomputed ? seed.sum * 2.0 / static_cast<double>(seed.count + 1) : seed.sum;
    const double y = is_null(x) ? 0.0 : exponential_step(seed.count, x, prev);
    return call.answer(keep(call, result_column(call), y));
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
    return call.answer(average(call, half_of(n), x));
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

  static double average(const Call& call, int64_t k, double x) {
    reserve(call);
    const Variable& variable = call.variable;
    const AverageColumns inner{call.argument(0).column_index, held_column(variable, inner_average),
                               held_column(variable, inner_count)};
    const AverageColumns outer{inner.result, variable.column_index,
                               held_column(variable, outer_count)};
    DataTable& table = call.table();
    table.set_cell(call.row, inner.series, x);
    if (call.row >= k - 1) {
      const AverageStep first = sliding_average(table, inner, call.row, x, k, k);
      return sliding_average(table, outer, call.row, first.value, first.count, k).value;
    }
    for (const AverageColumns& columns : {inner, outer}) {
      table.set_cell(call.row, columns.result, null_value);
      table.set_cell(call.row, columns.count, static_cast<double>(k));
    }
    return null_value;
  }
};

constexpr WordRow words[] = {
    word_row<MA>("MA", steady),       word_row<EMA>("EMA", steady),
    word_row<EXPMA>("EXPMA", steady), word_row<EMAWH>("EMAWH", follows_rows),
    word_row<SMA>("SMA", steady),     word_row<AMA>("AMA", steady),
    word_row<DMA>("DMA", steady),     word_row<TMA>("TMA", steady),
    word_row<MEMA>("MEMA", steady),   word_row<EXPMEMA>("EXPMEMA", steady),
    word_row<TRMA>("TRMA", steady),
};

}  // namespace

std::span<const WordRow> moving_average_words() { return words; }

}  // namespace quor
