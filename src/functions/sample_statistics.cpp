// Words that evaluate their values bar by bar or argument by argument: sums, counts, means, ranks.
#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "core/call.h"
#include "core/columns.h"
#include "functions/averaging.h"
#include "functions/call_memory.h"
#include "functions/look_back.h"
#include "functions/over_arguments.h"
#include "functions/over_window.h"
#include "functions/scratch_frame.h"
#include "functions/series.h"
#include "functions/word_steps.h"
#include "platform/math.h"
#include "platform/processor.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The bar joins the sum of the window before it, and the oldest bar of that leaves once the window
/// is full. A null makes 0 of the whole sum.
double sum_step(double x, const WindowSeed& seed, int32_t row, int64_t n) {
  double sum = x + seed.sum;
  if (row > n - 1 && !is_null(seed.leaving)) sum -= seed.leaving;
  return is_null(sum) ? 0.0 : sum;
}

/// Adds up the window anew at every bar. N of 0 takes all bars so far.
class SUM final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    if (const Status status = call.evaluate(1, period); failed(status)) return status;
    int64_t n = to_int(period);
    if (n == 0) n = static_cast<int64_t>(call.row) + 1;
    if (call.scan) {
      call.script().raise_period(static_cast<int32_t>(n));
      return Status::ok;
    }
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const SeriesStore store(call, call.argument(0).column_index);
    const int32_t column = store_in_own_column(call, call.argument(0), x);
    store.note(x);
    const WindowSeed seed = seed_of(call, column, n);
    const double sum = sum_step(x, seed, call.row, n);
    return call.answer(stored(call, call.variable.column_index, sum));
  }

  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    const int32_t n = period ? to_int(*period) : 0;
    if (period && n == 0) return sums_of_all(call);
    if (n < 1 || call.rows.first < n || !call.variable.has_column()) return nullptr;
    const double* series = series_over(call, 0, SeriesPlace::own_column);
    if (series == nullptr) return nullptr;
    double* sums = call.overwrite(call.variable.column_index);
    reduce_rows(PlainSum(), series, call.rows.shifted(-1), static_cast<size_t>(n), sums);
    if (!slide(series + call.rows.first, n, sums, call.size())) sum_across_nulls(call, sums, n);
    return sums;
  }
  ColumnTraits column_traits() const override { return {.series = SeriesPlace::own_column}; }

 private:
  /// Brings the sums of n values each one row further. False if there are null ones, which stay.
  static bool slide(const double* x, int32_t n, double* sums, size_t size) {
    bool meets_nulls = false;
    wherever_wide([=, &meets_nulls] {
      const double* leaving = x - n;
      int64_t nulls = 0;
      for (size_t i = 0; i < size; ++i) {
        // No null leaves a window whose sum isn't null.
        const double sum = sums[i];
        const double next = x[i] + sum - leaving[i];
        const double number = is_null(next) ? 0.0 : next;
        nulls |= static_cast<int64_t>(is_null(sum));
        sums[i] = is_null(sum) ? sum : number;
      }
      meets_nulls = nulls != 0;
    });
    return !meets_nulls;
  }
  /// The rows whose sum still is null.
  static void sum_across_nulls(const ColumnCall& call, double* sums, int32_t n) {
    const auto series = call.table().cells(call.argument(0)->column_index);
    for (int32_t row = call.rows.first; row < call.rows.end; ++row) {
      double& sum = sums[row - call.rows.first];
      if (!is_null(sum)) continue;
      const WindowSeed seed = recompute_seed(series, row - 1, n);
      sum = sum_step(series[static_cast<size_t>(row)], seed, row, n);
    }
  }

  struct PlainSum {
    static constexpr bool in_lanes = true;
    template <typename W>
    Number<W> operator()(const W& window) const {
      Number<W> sum{};
      for (size_t i = 0; i < window.size(); ++i) sum += window[i];
      return sum;
    }
    template <typename N>
    static N finish(const N& sum) {
      return sum;
    }
  };

  /// The sum of the bars up to one, without nulls.
  struct SumSoFar {
    double sum = 0.0;
    bool seen = false;  ///< a value that isn't null

    void take(double x) {
      if (is_null(x)) return;
      sum += x;
      seen = true;
    }
    double or_null() const { return seen ? sum : null_value; }
  };

  static WindowSeed seed_of(const Call& call, int32_t column, int64_t n) {
    const DataTable& table = call.table();
    const auto step = [&table, column](int32_t row, SumSoFar& so_far) {
      so_far.take(table.cell(row, column));
      return Status::ok;
    };
    RowStates<SumSoFar>* sums = nullptr;
    if (n > call.row && column != -1 && call.variable.remembering >= Remembering::in_order) {
      ignore_status(follow(call, call.row, 0, step, sums));
    }
    if (sums == nullptr || sums->known() <= call.row || call.row == 0) {
      return window_seed(table.cells(column), null_value, int64_t{call.row} - 1, n);
    }
    return {.sum = sums->before(call.row).or_null(), .count = n};
  }

  static const double* sums_of_all(const ColumnCall& call) {
    if (!call.variable.has_column()) return nullptr;
    const double* series = series_over(call, 0, SeriesPlace::own_column);
    if (series == nullptr) return nullptr;
    double* sums = call.overwrite(call.variable.column_index);
    const auto step = [&call, series, sums](size_t place, SumSoFar& so_far) {
      const double x = series[static_cast<size_t>(call.rows.first) + place];
      const double sum = x + so_far.or_null();
      sums[place] = is_null(sum) ? 0.0 : sum;
      so_far.take(x);
    };
    return follow<SumSoFar>(call, call.rows, step) != nullptr ? sums : nullptr;
  }
};

/// How many of the last N bars have an X above 0. N of 0 takes as many as the table has; a fraction
/// of a bar counts as a bar.
class COUNT final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return scan_unchecked_period(call, 2, 1);
    double bars = null_value;
    ignore_status(call.evaluate(1, bars));
    if (bars == 0.0) bars = call.table().row_count();
    bars = std::ceil(std::min(bars, call.row + 1.0));
    if (!(bars > 0.0)) return call.answer(0.0);
    const auto step = [&call](int32_t row, HitCount& count) {
      double x;
      const Status status = call.recall(0, row, x);
      count.hits += x > 0.0;
      return status;
    };
    RowStates<HitCount>* counts = nullptr;
    if (const Status status = follow(call, call.row, 1, step, counts); failed(status)) {
      return status;
    }
    const int64_t before = call.row - static_cast<int64_t>(bars);
    HitCount count;
    int32_t row = call.row;
    for (; row > before && has_to_walk(call, counts, call.row, row); --row) {
      if (const Status status = step(row, count); failed(status)) return status;
    }
    if (row > before) {
      count.hits += counts->after(row).hits;
      if (before >= 0) count.hits -= counts->after(static_cast<int32_t>(before)).hits;
    }
    return call.answer(count.hits);
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    if (!period) return nullptr;
    const double bars = *period == 0.0 ? call.rows.end : std::ceil(*period);
    if (!(bars > 0.0)) return call.everywhere(0.0);
    const double* x = call.values(0);
    if (x == nullptr) return nullptr;
    const auto* counts = follow<HitCount>(
        call, call.rows, [x](size_t place, HitCount& count) { count.hits += x[place] > 0.0; });
    if (counts == nullptr) return nullptr;
    const auto n = static_cast<ptrdiff_t>(std::min<double>(bars, call.rows.end));
    // The bars up to row n - 1 take all.
    const auto all = static_cast<size_t>(
        std::clamp<ptrdiff_t>(n - call.rows.first, 0, static_cast<ptrdiff_t>(call.size())));
    double* result = call.scratch();
    for (size_t i = 0; i < all; ++i) result[i] = counts[i].hits;
    for (size_t i = all; i < call.size(); ++i) {
      result[i] = counts[i].hits - counts[static_cast<ptrdiff_t>(i) - n].hits;
    }
    return result;
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false, .revisits = true}; }

 private:
  /// How many bars up to one count.
  struct HitCount {
    int32_t hits = 0;
  };
};

/// The harmonic mean of the last N bars; null if one of them is null or 0.
struct HarmonicMean {
  static constexpr size_t parameters = 1;
  static constexpr bool newest_first = true;
  static constexpr bool reorders = false;
  double period = 0.0;

  static Status scan(const Call& call) { return scan_period(call, 2, 1); }
  bool take(size_t, double value) { return (period = value) > 0.0; }
  int32_t bars() const { return to_int(std::ceil(period)); }
  static bool ends(double x) { return is_null(x) || x == 0.0; }
  static double value(std::span<const double> x, int32_t) {
    double sum = 0.0;
    for (size_t i = x.size(); i-- > 0;) {
      if (ends(x[i])) return null_value;
      sum += 1.0 / x[i];
    }
    return sum == 0.0 ? null_value : 1.0 / (sum / static_cast<double>(x.size()));
  }
};
using HARMEAN = LookBack<HarmonicMean>;

/// The mean of its arguments.
struct Mean {
  static constexpr double start = 0.0;
  static Status scan(const Call& call) { return call.check_count(2, 16); }
  static double take(double sum, double x) { return sum + x; }
  static double finish(double sum, size_t count) { return sum / static_cast<double>(count); }
};
using MV = OverArguments<Mean>;

/// Nulls stand behind all numbers.
bool is_before(double a, double b) { return is_null(b) ? !is_null(a) : a < b; }

/// The P-th percentile of the last N bars: one of their values, none is blended from two.
struct Percentile {
  static constexpr size_t parameters = 2;
  static constexpr bool newest_first = false;
  static constexpr bool reorders = true;
  int32_t n = 0;
  double percent = 0.0;

  static Status scan(const Call& call) { return call.check_count(3); }
  bool take(size_t position, double value) {
    if (position == 1) {
      n = to_int(value);
      return true;
    }
    percent = value;
    return percent >= 0.0 && percent <= 100.0;
  }
  int32_t bars() const { return n; }
  static bool ends(double) { return false; }
  double value(std::span<double> x, int32_t) const {
    const auto place = x.begin() + to_int(std::ceil((n - 1) * (percent / 100.0)));
    std::nth_element(x.begin(), place, x.end(), is_before);
    return *place;
  }
};
using PERCENTILE = LookBack<Percentile>;

/// How many values stand in front of the value at a position; equal ones in their own order.
size_t rank_of(std::span<const double> values, size_t position, bool descending) {
  size_t rank = 0;
  for (size_t i = 0; i < values.size(); ++i) {
    const double a = descending ? values[position] : values[i];
    const double b = descending ? values[i] : values[position];
    if (is_before(a, b) || (i < position && !is_before(b, a))) ++rank;
  }
  return rank;
}

/// The position of the value with the rank, both counted from 0.
size_t position_of_rank(std::span<const double> values, size_t rank, bool descending) {
  size_t position = 0;
  while (position + 1 < values.size() && rank_of(values, position, descending) != rank) ++position;
  return position;
}

/// T, K and up to 30 values: what `Pick` makes of the K-th of them, in ascending order for a T of
/// 0, in descending order for 1.
template <double (*pick)(std::span<const double> values, size_t position)>
class SortedChoice : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    const size_t count = call.argument_count();
    if (call.scan) return call.check_count(3, most_arguments);
    double order = null_value;
    double choice = null_value;
    if (const Status status = call.evaluate(0, order); failed(status)) return status;
    if (const Status status = call.evaluate(1, choice); failed(status)) return status;
    if (!is_in_range(order, choice, count)) return call.answer(null_value);

    ScratchFrame sample(call.calculator);
    for (size_t i = 2; i < count; ++i) {
      double value = null_value;
      if (const Status status = call.evaluate(i, value); failed(status)) return status;
      sample.push(value);
    }
    return call.answer(choose(sample.values(), order, choice));
  }
  const double* column(const ColumnCall& call) const final {
    const size_t count = call.argument_count();
    const double* arguments[most_arguments];
    if (count < 3 || count > most_arguments) return nullptr;
    for (size_t argument = 0; argument < count; ++argument) {
      arguments[argument] = call.values(argument);
      if (arguments[argument] == nullptr) return nullptr;
    }
    double* result = call.scratch();
    double sample[most_arguments];
    for (size_t i = 0; i < call.size(); ++i) {
      const double order = arguments[0][i];
      const double choice = arguments[1][i];
      for (size_t argument = 2; argument < count; ++argument) {
        sample[argument - 2] = arguments[argument][i];
      }
      result[i] = is_in_range(order, choice, count) ? choose({sample, count - 2}, order, choice)
                                                    : null_value;
    }
    return result;
  }
  ColumnTraits column_traits() const final {
    return {.leaves_state = false, .passes_over = true, .passed_over_from = 2};
  }

 private:
  static constexpr size_t most_arguments = 32;

  static bool is_in_range(double order, double choice, size_t count) {
    const int32_t t = to_int(order);
    const int64_t k = to_int(choice);
    return k >= 1 && k <= static_cast<int64_t>(count) - 2 && (t == 0 || t == 1);
  }

  static double choose(std::span<const double> values, double order, double choice) {
    const auto rank = static_cast<size_t>(to_int(choice) - 1);
    return pick(values, position_of_rank(values, rank, to_int(order) == 1));
  }
};

double value_at(std::span<const double> values, size_t position) { return values[position]; }

double place_of(std::span<const double>, size_t position) {
  return static_cast<double>(position + 1);
}

using SORT = SortedChoice<value_at>;
using SORTPOS = SortedChoice<place_of>;

/// The density of the normal distribution.
double normal_density(double x, double mean, double deviation) {
  constexpr double root_of_two_pi = 2.5066282746310007;
  const double z = (x - mean) / deviation;
  return platform::exp(z * -0.5 * z) / (deviation * root_of_two_pi);
}

class NORMPDF final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(3);
    double inputs[3];
    for (size_t i = 0; i < 3; ++i) {
      inputs[i] = null_value;
      if (const Status status = call.evaluate(i, inputs[i]); failed(status)) return status;
    }
    if (inputs[2] < 0.0) {
      throw std::domain_error("Invalid parametrization for the distribution.");
    }
    return call.answer(normal_density(inputs[0], inputs[1], inputs[2]));
  }
};

constexpr WordRow sample_statistic_rows[] = {
    word_row<SUM>("SUM", 64, steady | has_result_column | period_at(1)),
    word_row<COUNT>("COUNT", 22, steady | period_at(1)),
    word_row<HARMEAN>("HARMEAN", 179, steady | period_at(1)),
    word_row<MV>("MV", 182, steady),
    word_row<PERCENTILE>("PERCENTILE", 187, steady | period_at(1)),
    word_row<SORT>("SORT", 190, steady),
    word_row<SORTPOS>("SORTPOS", 191, steady),
    word_row<NORMPDF>("NORMPDF", 101, steady | can_fail),
};

}  // namespace

std::span<const WordRow> sample_statistic_words() { return sample_statistic_rows; }

}  // namespace quor
