#include "exact_loops.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#if defined(__x86_64__) && !defined(__clang__)
#define QUOR_EXACT [[gnu::target("avx2,fma"), gnu::flatten]]
#else
#define QUOR_EXACT
#endif

#ifndef __clang__
// The vectors stay inside of this file.
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace quor_bench {
namespace {

constexpr double null = std::numeric_limits<double>::quiet_NaN();

using Four [[gnu::vector_size(32)]] = double;

Four four_at(const double* x) {
  Four four;
  std::memcpy(&four, x, sizeof four);
  return four;
}

Four all(double x) { return Four{x, x, x, x}; }

template <typename Change>
Four each(const Change& change) {
  return Four{change(0), change(1), change(2), change(3)};
}

#if defined(__x86_64__) && !defined(__clang__)
QUOR_EXACT inline Four fused(const Four& a, const Four& b, const Four& c) {
  return __builtin_ia32_vfmaddpd256(a, b, c);
}
#else
Four fused(const Four& a, const Four& b, const Four& c) {
  return each([&](size_t i) { return std::fma(a[i], b[i], c[i]); });
}
#endif

/// x / d by the reciprocal of d and what the product with it has left.
Four quotient(const Four& x, double d, double reciprocal) {
  const Four q = x * reciprocal;
  return fused(fused(-q, all(d), x), all(reciprocal), q);
}

/// Rows in lockstep.
constexpr size_t abreast = 4;
constexpr size_t rows_abreast = 4 * abreast;

/// Hands the rows from `first` on to `group`, as many at a time as stand abreast, and what is left
/// to `row`.
template <typename Group, typename Row>
void over_rows(size_t first, size_t end, const Group& group, const Row& row) {
  size_t i = first;
  for (; i + rows_abreast <= end; i += rows_abreast) group(i);
  for (; i < end; ++i) row(i);
}

/// What place j of a window is multiplied with and divided by.
struct Place {
  double number;
  double divisor;
  double reciprocal;
};

constexpr auto places = [] {
  std::array<Place, 64> all_of_them{};
  for (size_t j = 1; j < all_of_them.size(); ++j) {
    const auto divisor = static_cast<double>(j * (j + 1));
    all_of_them[j] = {static_cast<double>(j + 1), divisor, 1.0 / divisor};
  }
  return all_of_them;
}();

double deviation(const double* x, size_t n) {
  double total = x[0];
  double sum = 0.0;
  for (size_t j = 1; j < n; ++j) {
    total += x[j];
    const double distance = x[j] * places[j].number - total;
    sum += distance * distance / places[j].divisor;
  }
  return std::sqrt(sum / static_cast<double>(n - 1));
}

void deviations_abreast(const double* x, size_t n, double* y) {
  Four total[abreast];
  Four sum[abreast];
  for (size_t k = 0; k < abreast; ++k) {
    total[k] = four_at(x + 4 * k);
    sum[k] = Four{};
  }
  for (size_t j = 1; j < n; ++j) {
    const Place& place = places[j];
    for (size_t k = 0; k < abreast; ++k) {
      const Four value = four_at(x + j + 4 * k);
      total[k] += value;
      const Four distance = value * place.number - total[k];
      sum[k] += quotient(distance * distance, place.divisor, place.reciprocal);
    }
  }
  const auto fewer = static_cast<double>(n - 1);
  for (size_t k = 0; k < abreast; ++k) {
    const Four variance = quotient(sum[k], fewer, 1.0 / fewer);
    const Four root = each([&variance](size_t i) { return std::sqrt(variance[i]); });
    std::memcpy(y + 4 * k, &root, sizeof root);
  }
}

/// The window of the first full one still has no deviation.
void deviations(const Series& x, size_t n, Series& y) {
  std::fill_n(y.begin(), std::min(n, y.size()), null);
  over_rows(
      n, x.size(), [&](size_t i) { deviations_abreast(&x[i + 1 - n], n, &y[i]); },
      [&](size_t i) { y[i] = deviation(&x[i + 1 - n], n); });
}

QUOR_EXACT void deviation_line(const Bars& bars, std::span<Series> lines) {
  deviations(bars.close, 20, lines[0]);
}

class Mean {
 public:
  explicit Mean(size_t n) : n_(n), count_(static_cast<double>(n)) {}

  double at(const double* x, size_t i) {
    if (i < n_) return begin(x[i], i);
    mean_ = (mean_ * count_ - x[i - n_] + x[i]) / count_;
    return mean_;
  }

 private:
  double begin(double x, size_t i) {
    sum_ += x;
    mean_ = i + 1 < n_ ? null : sum_ / count_;
    return mean_;
  }

  size_t n_;
  double count_;
  double sum_ = 0.0;
  double mean_ = null;
};

/// The mean of the rows waits for its division, in which time their deviations are made.
QUOR_EXACT void bollinger_lines(const Bars& bars, std::span<Series> lines) {
  constexpr size_t n = 20;
  const double* x = bars.close.data();
  Mean mean(n);
  const auto put = [&lines](size_t i, double middle, double width) {
    lines[0][i] = middle;
    lines[1][i] = middle + 2.0 * width;
    lines[2][i] = middle - 2.0 * width;
  };
  for (size_t i = 0; i < std::min(n, bars.size()); ++i) put(i, mean.at(x, i), null);
  over_rows(
      n, bars.size(),
      [&](size_t i) {
        double widths[rows_abreast];
        deviations_abreast(x + i + 1 - n, n, widths);
        for (size_t k = 0; k < rows_abreast; ++k) put(i + k, mean.at(x, i + k), widths[k]);
      },
      [&](size_t i) { put(i, mean.at(x, i), deviation(x + i + 1 - n, n)); });
}

/// The window before the bar, then the bar, less the value that leaves.
double sum_at(const Series& x, size_t n, size_t i) {
  const size_t first = i < n ? 0 : i - n;
  double sum = 0.0;
  for (size_t k = first; k <= i; ++k) sum += x[k];
  return i < n ? sum : sum - x[first];
}

void sums_abreast(const double* x, size_t n, double* y) {
  Four sum[abreast] = {};
  for (size_t j = 0; j <= n; ++j) {
    for (size_t k = 0; k < abreast; ++k) sum[k] += four_at(x + j + 4 * k);
  }
  for (size_t k = 0; k < abreast; ++k) {
    sum[k] -= four_at(x + 4 * k);
    std::memcpy(y + 4 * k, &sum[k], sizeof sum[k]);
  }
}

QUOR_EXACT void sum_line(const Bars& bars, std::span<Series> lines) {
  constexpr size_t n = 20;
  const Series& x = bars.volume;
  Series& y = lines[0];
  for (size_t i = 0; i < std::min(n, x.size()); ++i) y[i] = sum_at(x, n, i);
  over_rows(
      n, x.size(), [&](size_t i) { sums_abreast(&x[i - n], n, &y[i]); },
      [&](size_t i) { y[i] = sum_at(x, n, i); });
}

/// A series that begins late starts its average.
double smoothed(double before, double x, double n) {
  return std::isnan(before) ? x : ((n - 1.0) * before + x) / n;
}

double exponential(double before, double x, double n) {
  return std::isnan(before) ? x : ((n - 1.0) * before + (x + x)) / (n + 1.0);
}

QUOR_EXACT void strength_line(const Bars& bars, std::span<Series> lines) {
  Series& y = lines[0];
  double gains = null;
  double changes = null;
  y[0] = null;
  for (size_t i = 1; i < y.size(); ++i) {
    const double step = bars.close[i] - bars.close[i - 1];
    gains = smoothed(gains, step > 0.0 ? step : 0.0, 14.0);
    changes = smoothed(changes, std::fabs(step), 14.0);
    y[i] = gains / changes * 100.0;
  }
}

/// Few enough to stay near.
constexpr size_t rows_of_extremes = 256;
constexpr size_t longest_extreme = 20;

template <bool higher>
double further(double a, double b) {
  return (higher ? a > b : a < b) ? a : b;
}

/// The extremes of the windows that end at some rows, from those of windows half as long.
template <bool higher>
void extremes_of_rows(const double* x, size_t n, size_t rows, double* y) {
  double extremes[rows_of_extremes + longest_extreme];
  size_t left = rows + n - 1;
  std::copy_n(x, left, extremes);
  for (size_t width = 1; width < n;) {
    const size_t step = std::min(width, n - width);
    left -= step;
    for (size_t i = 0; i < left; ++i)
      extremes[i] = further<higher>(extremes[i + step], extremes[i]);
    width += step;
  }
  std::copy_n(extremes, rows, y);
}

template <bool higher>
void extremes(const Series& x, size_t n, Series& y) {
  const size_t first = std::min(n, x.size());
  double best = x[0];
  for (size_t i = 0; i < first; ++i) y[i] = best = further<higher>(x[i], best);
  for (size_t i = first; i < x.size(); i += rows_of_extremes) {
    const size_t rows = std::min(rows_of_extremes, x.size() - i);
    extremes_of_rows<higher>(&x[i + 1 - n], n, rows, &y[i]);
  }
}

QUOR_EXACT void highest_line(const Bars& bars, std::span<Series> lines) {
  extremes<true>(bars.high, 20, lines[0]);
}

/// The averages of a bar don't wait for each other's bar before.
QUOR_EXACT void stochastic_lines(const Bars& bars, std::span<Series> lines) {
  Series& lowest = lines[0];
  Series& highest = lines[1];
  extremes<false>(bars.low, 9, lowest);
  extremes<true>(bars.high, 9, highest);
  double k = null;
  double d = null;
  for (size_t i = 0; i < bars.size(); ++i) {
    const double place = (bars.close[i] - lowest[i]) / (highest[i] - lowest[i]) * 100.0;
    k = smoothed(k, place, 3.0);
    d = smoothed(d, k, 3.0);
    lines[0][i] = k;
    lines[1][i] = d;
    lines[2][i] = 3.0 * k - 2.0 * d;
  }
}

QUOR_EXACT void convergence_lines(const Bars& bars, std::span<Series> lines) {
  double fast = null;
  double slow = null;
  double signal = null;
  for (size_t i = 0; i < bars.size(); ++i) {
    fast = exponential(fast, bars.close[i], 12.0);
    slow = exponential(slow, bars.close[i], 26.0);
    const double difference = fast - slow;
    signal = exponential(signal, difference, 9.0);
    lines[0][i] = difference;
    lines[1][i] = signal;
    lines[2][i] = (difference - signal) * 2.0;
  }
}

QUOR_EXACT void crossing_line(const Bars& bars, std::span<Series> lines) {
  Mean fast(5);
  Mean slow(10);
  double fast_before = null;
  double slow_before = null;
  for (size_t i = 0; i < bars.size(); ++i) {
    const double fast_mean = fast.at(bars.close.data(), i);
    const double slow_mean = slow.at(bars.close.data(), i);
    lines[0][i] = fast_mean > slow_mean && slow_before >= fast_before ? 1.0 : 0.0;
    fast_before = fast_mean;
    slow_before = slow_mean;
  }
}

QUOR_EXACT void mean_lines(const Bars& bars, std::span<Series> lines) {
  std::array means{Mean(5), Mean(10), Mean(20), Mean(60)};
  for (size_t i = 0; i < bars.size(); ++i) {
    for (size_t k = 0; k < means.size(); ++k) lines[k][i] = means[k].at(bars.close.data(), i);
  }
}

QUOR_EXACT void price_line(const Bars& bars, std::span<Series> lines) {
  const auto price = [&bars](const auto& at) {
    return (at(bars.high) + at(bars.low) + at(bars.close) * 2.0) / 4.0 - at(bars.open);
  };
  over_rows(
      0, bars.size(),
      [&](size_t i) {
        for (size_t k = i; k < i + rows_abreast; k += 4) {
          const Four four = price([k](const Series& x) { return four_at(&x[k]); });
          std::memcpy(&lines[0][k], &four, sizeof four);
        }
      },
      [&](size_t i) { lines[0][i] = price([i](const Series& x) { return x[i]; }); });
}

constexpr DrawnLines table[] = {
    {"STD", "A:STD(C,20);", {"A"}, deviation_line},
    {"BOLL",
     "MID:MA(C,20);UP:MID+2*STD(C,20);DOWN:MID-2*STD(C,20);",
     {"MID", "UP", "DOWN"},
     bollinger_lines},
    {"SUM", "A:SUM(V,20);", {"A"}, sum_line},
    {"RSI", "LC:=REF(C,1);A:SMA(MAX(C-LC,0),14,1)/SMA(ABS(C-LC),14,1)*100;", {"A"}, strength_line},
    {"KDJ",
     "RSV:=(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;K:SMA(RSV,3,1);D:SMA(K,3,1);J:3*K-2*D;",
     {"K", "D", "J"},
     stochastic_lines},
    {"MACD",
     "DIF:EMA(C,12)-EMA(C,26);DEA:EMA(DIF,9);A:(DIF-DEA)*2,COLORSTICK;",
     {"DIF", "DEA", "A"},
     convergence_lines},
    {"CROSS", "A:CROSS(MA(C,5),MA(C,10));", {"A"}, crossing_line},
    {"MA x 4", "A:MA(C,5);B:MA(C,10);D:MA(C,20);E:MA(C,60);", {"A", "B", "D", "E"}, mean_lines},
    {"HHV", "A:HHV(H,20);", {"A"}, highest_line},
    {"price", "A:(H+L+2*C)/4-O;", {"A"}, price_line},
};

}  // namespace

std::span<const DrawnLines> drawn_lines() { return table; }

#if defined(__x86_64__) && !defined(__clang__)
bool has_exact_loops() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }
#else
bool has_exact_loops() { return true; }
#endif

}  // namespace quor_bench
