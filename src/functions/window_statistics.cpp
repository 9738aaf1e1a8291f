// Words that reduce the last N values of one or two series to a number. The series are read in
// place from columns, oldest value first.
#include <algorithm>
#include <array>
#include <cmath>

#include "core/call.h"
#include "functions/averaging.h"
#include "functions/over_window.h"
#include "functions/power.h"
#include "functions/running_statistics.h"
#include "functions/series.h"
#include "functions/word_steps.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

template <typename W>
double size_of(const W& window) {
  return static_cast<double>(window.size());
}

/// The mean, corrected value by value.
template <typename W>
double running_mean(const W& window) {
  if (window.empty()) return null_value;
  double mean = 0.0;
  for (size_t i = 0; i < window.size(); ++i) {
    mean += (window[i] - mean) / static_cast<double>(i + 1);
  }
  return mean;
}

double zero_unless_null(double value) { return is_null(value) ? value : 0.0; }
template <typename Part>
Lanes<Part> zero_unless_null(const Lanes<Part>& lanes) {
  return each_part<Part>([&](size_t i) {
    const Part& part = lanes.parts[i];
    return part == part ? Part{} : part;
  });
}

/// What place j of a window goes by.
struct Place {
  double number;    ///< j + 1
  Divisor divisor;  ///< j * (j+1)
};

constexpr auto places = [] {
  std::array<Place, 512> all{};
  for (size_t j = 1; j < all.size(); ++j) {
    all[j] = {static_cast<double>(j + 1), divisor_of(j * (j + 1))};
  }
  return all;
}();

/// The part of place j in the sum of squares, given the total of the values up to it.
template <typename W>
Number<W> part_of_place(const Number<W>& value, const Number<W>& total, size_t j) {
  if constexpr (is_fused<W>) {
    return fused_quotient(square(value * places[j].number - total), places[j].divisor);
  } else {
    const auto before = static_cast<double>(j);
    const double number = before + 1.0;
    return square(value * number - total) / (number * before);
  }
}

/// The sum of the squared distances from the mean, in one pass: value j adds
/// ((j+1) * w[j] - T)^2 / ((j+1) * j) with T the sum of the values so far.
template <typename W>
Number<W> squared_distances(const W& window) {
  if (window.empty()) return Number<W>{};
  Number<W> total = window[0];
  // A null alone in its window has no distance; in a longer one it spreads by the total.
  Number<W> sum = zero_unless_null(window[0]);
  for (size_t j = 1; j < window.size(); ++j) {
    const Number<W> value = window[j];
    total += value;
    sum += part_of_place<W>(value, total, j);
  }
  return sum;
}

/// Most reductions have nothing to be made once per N.
struct PlainReduction {
  static constexpr bool in_lanes = true;
  explicit PlainReduction(int32_t) {}
  static Status scan(const Call& call) { return scan_period(call, 2, 1); }
  template <typename N>
  static N finish(const N& value) {
    return value;
  }
};

/// The squares over N - `fewer`. A window of no more values has no variance.
template <size_t fewer>
struct Variance : PlainReduction {
  using PlainReduction::PlainReduction;
  static constexpr size_t longest_fused = places.size();
  static size_t divisor(size_t count) { return std::max<size_t>(count - fewer, 1); }
  template <typename W>
  Number<W> operator()(const W& window) const {
    if (fewer > 0 && window.size() <= fewer) return Number<W>{} + null_value;
    return quotient<W>(squared_distances(window), window, size_of(window) - fewer);
  }
};

using SampleVariance = Variance<1>;
using PopulationVariance = Variance<0>;

template <typename Squares>
struct Deviation : Squares {
  using Squares::Squares;
  template <typename N>
  static N finish(const N& variance) {
    return square_root(variance);
  }
};

struct SquaresAboutMean : PlainReduction {
  using PlainReduction::PlainReduction;
  static constexpr bool in_lanes = false;
  template <typename W>
  double operator()(const W& window) const {
    const double mean = running_mean(window);
    double sum = 0.0;
    for (size_t i = 0; i < window.size(); ++i) sum += power(window[i] - mean, 2.0);
    return sum;
  }
};

/// Nulls are left out of the mean, whose divisor counts them all the same, but not of the result,
/// which they make null.
struct MeanAbsoluteDeviation : PlainReduction {
  using PlainReduction::PlainReduction;
  static constexpr size_t longest_fused = INT32_MAX;
  static size_t divisor(size_t count) { return count; }
  static Status scan(const Call& call) { return scan_unchecked_period(call, 2, 1); }
  template <typename W>
  Number<W> operator()(const W& window) const {
    const double size = size_of(window);
    Number<W> mean{};
    for (size_t i = 0; i < window.size(); ++i) mean += quotient<W>(window[i], window, size);
    Number<W> sum{};
    for (size_t i = 0; i < window.size(); ++i) {
      sum += quotient<W>(absolute(window[i] - mean), window, size);
    }
    return sum;
  }
};

struct ExcessKurtosis : PlainReduction {
  using PlainReduction::PlainReduction;
  static constexpr bool in_lanes = false;
  template <typename W>
  double operator()(const W& window) const {
    RunningStatistics moments;
    for (size_t i = 0; i < window.size(); ++i) moments.take(window[i]);
    if (moments.count < 4) return null_value;
    const auto c = static_cast<double>(moments.count);
    const double g = c * moments.m4 / (moments.m2 * moments.m2) - 3.0 + 6.0 / (c + 1.0);
    return g * ((c * c - 1.0) / ((c - 3.0) * (c - 2.0)));
  }
};

constexpr WindowRule behind_window = {};

using STD = OverWindow<Deviation<SampleVariance>, WindowRule{.place = SeriesPlace::column_of_call}>;
using STDP = OverWindow<Deviation<PopulationVariance>, behind_window>;
using VAR = OverWindow<SampleVariance, behind_window>;
using VARP = OverWindow<PopulationVariance, behind_window>;
using DEVSQ = OverWindow<SquaresAboutMean, behind_window>;
class KURTOSIS final
    : public OverWindow<ExcessKurtosis, WindowRule{.gate = Gate::behind_windows_of_four}> {
  using OverWindow::OverWindow;
};
/// A period that fails is a null one.
class AVEDEV final
    : public OverWindow<MeanAbsoluteDeviation,
                        WindowRule{.gate = Gate::full_window, .ignores_period_status = true}> {
  using OverWindow::OverWindow;
};

/// 1 + 2 + ... + n; 0 for a negative n.
double sum_up_to(int64_t n) {
  const int64_t sum = n > 0 ? n * (n + 1) / 2 : 0;
  return static_cast<double>(sum);
}

/// The slope of the regression line per bar. The places of the values count from 1 in the numerator
/// and from 0 in their mean.
class RegressionSlope {
 public:
  static constexpr bool in_lanes = true;
  static Status scan(const Call& call) { return scan_period(call, 2, 1); }
  template <typename N>
  static N finish(const N& slope) {
    return slope;
  }

  explicit RegressionSlope(int32_t n)
      : n_(n), mean_t_(sum_up_to(int64_t{n} - 1) / static_cast<double>(n)) {
    for (int32_t k = 0; k < n_; ++k) squares_ += square(k - mean_t_);
  }

  template <typename W>
  Number<W> operator()(const W& window) const {
    const double count = n_;
    Number<W> sum{};
    for (size_t i = window.size(); i-- > 0;) sum += window[i];
    const Number<W> mean_x = sum / count;
    Number<W> numerator{};
    for (int32_t k = 0; k < n_; ++k) {
      const double t = count - k;
      numerator += (window[window.size() - 1 - static_cast<size_t>(k)] - mean_x) * (t - mean_t_);
    }
    return numerator / squares_;
  }

 private:
  int32_t n_;
  double mean_t_;
  double squares_ = 0.0;
};

using SLOPE =
    OverWindow<RegressionSlope, WindowRule{.gate = Gate::full_window, .stores_before_gate = true}>;

/// The regression line's value at its last bar, given the mean of the values.
double regression_end(const Window& window, double mean, int32_t n) {
  const double count = n;
  const double st = sum_up_to(n);
  double sx = 0.0;
  double sxx = 0.0;
  for (size_t i = 0; i < window.size(); ++i) {
    const auto place = static_cast<double>(i + 1);
    sx += place * window[i];
    sxx += power(place, 2.0);
  }
  sx -= st * mean;
  sxx -= power(st / count, 2.0) * count;
  const double slope = sx / sxx;
  const double intercept = mean - slope * st / count;
  return count * slope + intercept;
}

/// Takes its mean from a bar of MA, which it runs from the first bar on.
class FORCAST final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return scan_period(call, 2, 1);
    const double mean = moving_average(call);
    double period = null_value;
    if (const Status status = call.evaluate(1, period); failed(status)) return status;
    const int32_t n = to_int(period);
    if (call.row < opens_at(Gate::behind_window, n)) return call.answer(null_value);
    double x = null_value;
    if (const Status status = call.evaluate(0, x); failed(status)) return status;
    const int32_t column = store_in_own_column(call, call.argument(0), x);
    return call.answer(regression_end(call.table().window(column, call.row, n), mean, n));
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(1);
    const int32_t n = period ? to_int(*period) : 0;
    const double* means = n >= 1 ? moving_average(call) : nullptr;
    if (means == nullptr) return nullptr;
    return call.each_row([&call, n, means](int32_t row) {
      if (row < opens_at(Gate::behind_window, n)) return null_value;
      const Window window = call.table().window(call.argument(0)->column_index, row, n);
      return regression_end(window, means[row - call.rows.first], n);
    });
  }
  ColumnTraits column_traits() const override {
    return {.keeps_results = true, .series = SeriesPlace::own_column};
  }
};

/// The windows of X and Y; both have the same size.
struct WindowPair {
  Window x;
  Window y;
};

/// Evaluates N, X and Y, stores X and Y of this bar and takes their windows. With `tolerant` an
/// argument that fails is a null.
Status take_windows(const Call& call, bool tolerant, WindowPair& windows) {
  double period = null_value;
  double x = null_value;
  double y = null_value;
  const auto evaluate = [&](size_t position, double& value) {
    const Status status = call.evaluate(position, value);
    return tolerant ? Status::ok : status;
  };
  if (const Status status = evaluate(2, period); failed(status)) return status;
  if (const Status status = evaluate(0, x); failed(status)) return status;
  if (const Status status = evaluate(1, y); failed(status)) return status;
  const int32_t x_column = store_in_own_column(call, call.argument(0), x);
  const int32_t y_column = store_in_own_column(call, call.argument(1), y);
  const int32_t n = to_int(period);
  windows = {call.table().window(x_column, call.row, n),
             call.table().window(y_column, call.row, n)};
  return Status::ok;
}

double population_covariance(const WindowPair& windows) {
  const auto& [x, y] = windows;
  if (x.empty()) return null_value;
  const double mean_x = running_mean(x);
  const double mean_y = running_mean(y);
  double sum = 0.0;
  for (size_t i = 0; i < x.size(); ++i) sum += (x[i] - mean_x) * (y[i] - mean_y);
  return sum / size_of(x);
}

/// The column form of a word of X, Y and N.
template <double (*value)(const WindowPair& windows)>
class OverWindowPair : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  const double* column(const ColumnCall& call) const final {
    const std::optional<double> period = call.number(2);
    const int32_t n = period ? to_int(*period) : 0;
    const int32_t x = n >= 1 ? series_column_over(call, 0, SeriesPlace::own_column) : -1;
    const int32_t y = x != -1 ? series_column_over(call, 1, SeriesPlace::own_column) : -1;
    if (y == -1) return nullptr;
    const DataTable& table = call.table();
    return call.each_row([&table, n, x, y](int32_t row) {
      return value({table.window(x, row, n), table.window(y, row, n)});
    });
  }
  ColumnTraits column_traits() const final {
    return {.series = SeriesPlace::own_column, .series_count = 2};
  }
};

class COVAR final : public OverWindowPair<population_covariance> {
 public:
  using OverWindowPair::OverWindowPair;
  Status execute(const Call& call) const override {
    if (call.scan) {
      const Status status = scan_unchecked_period(call, 3, 2);
      return failed(status) ? status : call.answer(null_value);
    }
    WindowPair windows;
    ignore_status(take_windows(call, true, windows));
    return call.answer(population_covariance(windows));
  }
};

double sample_deviation(const Window& window) {
  return Deviation<SampleVariance>::finish(SampleVariance(0)(window));
}

/// The covariance of the population over the deviations of the samples, which makes (m-1)/m of the
/// usual coefficient.
double correlation(double covariance, const WindowPair& windows) {
  return covariance / (sample_deviation(windows.y) * sample_deviation(windows.x));
}

double correlation_of(const WindowPair& windows) {
  return correlation(population_covariance(windows), windows);
}

/// A bar takes its windows once for the covariance and again for the deviations.
class CORRELATION final : public OverWindowPair<correlation_of> {
 public:
  using OverWindowPair::OverWindowPair;
  Status execute(const Call& call) const override {
    if (call.scan) return scan_period(call, 3, 2);
    WindowPair windows;
    ignore_status(take_windows(call, true, windows));
    const double covariance = population_covariance(windows);
    if (const Status status = take_windows(call, false, windows); failed(status)) return status;
    return call.answer(correlation(covariance, windows));
  }
};

/// In one pass, by means that are corrected value by value.
double pearson_coefficient(const WindowPair& windows) {
  double mean_x = 0.0;
  double mean_y = 0.0;
  double sxx = 0.0;
  double syy = 0.0;
  double sxy = 0.0;
  for (size_t i = 0; i < windows.x.size(); ++i) {
    const auto before = static_cast<double>(i);
    const double k = before + 1.0;
    const double dx = windows.x[i] - mean_x;
    const double dy = windows.y[i] - mean_y;
    const double ax = dx / k;
    const double ay = dy / k;
    mean_x += ax;
    mean_y += ay;
    sxx += ax * dx * before;
    syy += ay * dy * before;
    sxy += dx * dy * before / k;
  }
  return sxy / std::sqrt(sxx * syy);
}

class COEFFICIENTR final : public OverWindowPair<pearson_coefficient> {
 public:
  using OverWindowPair::OverWindowPair;
  Status execute(const Call& call) const override {
    if (call.scan) return scan_period(call, 3, 2);
    WindowPair windows;
    if (const Status status = take_windows(call, false, windows); failed(status)) return status;
    return call.answer(pearson_coefficient(windows));
  }
};

constexpr WordRow window_statistic_rows[] = {
    word_row<STD>("STD", 63, steady | periods_from(1, can_fail)),
    word_row<STDP>("STDP", 97, steady | periods_from(1, can_fail)),
    word_row<VAR>("VAR", 98, steady | periods_from(1, can_fail)),
    word_row<VARP>("VARP", 99, steady | periods_from(1, can_fail)),
    word_row<DEVSQ>("DEVSQ", 95, steady | periods_from(1, can_fail)),
    word_row<AVEDEV>("AVEDEV", 18, steady | periods_from(1, can_fail)),
    word_row<KURTOSIS>("KURTOSIS", 94, steady | period_at(1)),
    word_row<SLOPE>("SLOPE", 75, steady | periods_from(1, can_fail)),
    word_row<FORCAST>("FORCAST", 96, steady | periods_from(1, can_fail)),
    word_row<COVAR>("COVAR", 90, steady | periods_from(2, can_fail)),
    word_row<CORRELATION>("CORRELATION", 91, steady | periods_from(2, can_fail)),
    word_row<COEFFICIENTR>("COEFFICIENTR", 92, steady | periods_from(2, can_fail)),
};

}  // namespace

std::span<const WordRow> window_statistic_words() { return window_statistic_rows; }

}  // namespace quor
