#include "plain_loops.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace quor_bench {
namespace {

constexpr double null = std::numeric_limits<double>::quiet_NaN();

void moving_average(const Series& x, size_t n, Series& y) {
  const auto count = static_cast<double>(n);
  double sum = 0.0;
  for (size_t i = 0; i < std::min(n, x.size()); ++i) {
    sum += x[i];
    y[i] = i + 1 < n ? null : sum / count;
  }
  for (size_t i = n; i < x.size(); ++i) y[i] = (y[i - 1] * count - x[i - n] + x[i]) / count;
}

void exponential_average(const Series& x, size_t n, Series& y) {
  const auto count = static_cast<double>(n);
  y[0] = x[0];
  for (size_t i = 1; i < x.size(); ++i) {
    y[i] = ((count - 1.0) * y[i - 1] + (x[i] + x[i])) / (count + 1.0);
  }
}

void smoothed_average(const Series& x, size_t n, Series& y) {
  const auto count = static_cast<double>(n);
  y[0] = x[0];
  for (size_t i = 1; i < x.size(); ++i) {
    // A series that begins late starts its average.
    y[i] = std::isnan(y[i - 1]) ? x[i] : ((count - 1.0) * y[i - 1] + x[i]) / count;
  }
}

/// What `reduce` makes of each full window of n values.
template <typename Reduce>
void over_windows(const Series& x, size_t n, Series& y, const Reduce& reduce) {
  for (size_t i = 0; i < x.size(); ++i) {
    y[i] = i + 1 < n ? null : reduce(x.data() + (i + 1 - n), n);
  }
}

double weighted_mean(const double* x, size_t n) {
  double sum = 0.0;
  for (size_t i = 0; i < n; ++i) sum += static_cast<double>(i + 1) * x[i];
  return sum / (static_cast<double>(n * (n + 1)) * 0.5);
}

double sum_of(const double* x, size_t n) {
  double sum = 0.0;
  for (size_t i = 0; i < n; ++i) sum += x[i];
  return sum;
}

/// As the running form of the engine: one division per value.
double squared_distances(const double* x, size_t n) {
  double total = x[0];
  double sum = 0.0;
  for (size_t i = 1; i < n; ++i) {
    const auto before = static_cast<double>(i);
    total += x[i];
    const double distance = (before + 1.0) * x[i] - total;
    sum += distance * distance / ((before + 1.0) * before);
  }
  return sum;
}

double deviation(const double* x, size_t n) {
  return std::sqrt(squared_distances(x, n) / static_cast<double>(n - 1));
}

double population_deviation(const double* x, size_t n) {
  return std::sqrt(squared_distances(x, n) / static_cast<double>(n));
}

double mean_absolute_deviation(const double* x, size_t n) {
  const auto count = static_cast<double>(n);
  double mean = 0.0;
  for (size_t i = 0; i < n; ++i) mean += x[i] / count;
  double sum = 0.0;
  for (size_t i = 0; i < n; ++i) sum += std::fabs(x[i] - mean) / count;
  return sum;
}

double slope(const double* x, size_t n) {
  const auto count = static_cast<double>(n);
  const double mean_x = sum_of(x, n) / count;
  const double mean_t = (count - 1.0) / 2.0;
  double numerator = 0.0;
  double denominator = 0.0;
  for (size_t i = 0; i < n; ++i) {
    const double t = static_cast<double>(i) - mean_t;
    numerator += (x[i] - mean_x) * t;
    denominator += t * t;
  }
  return numerator / denominator;
}

/// The window before the bar without its nulls, then the bar, less the value that leaves.
void moving_sum(const Series& x, size_t n, Series& y) {
  for (size_t i = 0; i < x.size(); ++i) {
    const size_t first = i < n ? 0 : i - n;
    double sum = 0.0;
    for (size_t k = first; k < i; ++k) {
      if (!std::isnan(x[k])) sum += x[k];
    }
    sum += x[i];
    if (i >= n && !std::isnan(x[first])) sum -= x[first];
    y[i] = std::isnan(sum) ? 0.0 : sum;
  }
}

template <typename Further>
void extreme(const Series& x, size_t n, Series& y, const Further& further) {
  for (size_t i = 0; i < x.size(); ++i) {
    const size_t first = i + 1 < n ? 0 : i + 1 - n;
    double best = x[first];
    for (size_t k = first + 1; k <= i; ++k) best = further(x[k], best) ? x[k] : best;
    y[i] = best;
  }
}

void highest(const Series& x, size_t n, Series& y) { extreme(x, n, y, std::greater<>()); }
void lowest(const Series& x, size_t n, Series& y) { extreme(x, n, y, std::less<>()); }

/// Bars since the highest value of the window, the oldest of equal ones.
void bars_since_highest(const Series& x, size_t n, Series& y) {
  for (size_t i = 0; i < x.size(); ++i) {
    size_t best = i + 1 < n ? 0 : i + 1 - n;
    for (size_t k = best + 1; k <= i; ++k) best = x[k] > x[best] ? k : best;
    y[i] = static_cast<double>(i - best);
  }
}

template <typename Value>
void per_bar(const Bars& bars, Series& y, const Value& value) {
  for (size_t i = 0; i < bars.size(); ++i) y[i] = value(i);
}

double truth(bool value) { return value ? 1.0 : 0.0; }

void mean_price(const Bars& bars, Series& y) {
  per_bar(bars, y, [&bars](size_t i) {
    return (bars.open[i] + bars.high[i] + bars.low[i] + bars.close[i]) / 4.0;
  });
}

void rising_with_volume(const Bars& bars, Series& y) {
  per_bar(bars, y, [&bars](size_t i) {
    return truth(bars.close[i] > bars.open[i] && bars.volume[i] > 1000.0);
  });
}

void close_in_range(const Bars& bars, Series& y) {
  per_bar(bars, y, [&bars](size_t i) {
    return (bars.close[i] - bars.low[i]) / (bars.high[i] - bars.low[i] + 0.01) * 100.0;
  });
}

void crossing_averages(const Bars& bars, Series& y) {
  Series fast(bars.size());
  Series slow(bars.size());
  moving_average(bars.close, 5, fast);
  moving_average(bars.close, 10, slow);
  y[0] = 0.0;
  for (size_t i = 1; i < y.size(); ++i) {
    y[i] = truth(fast[i] > slow[i] && slow[i - 1] >= fast[i - 1]);
  }
}

void bars_since_rise(const Bars& bars, Series& y) {
  size_t last = 0;
  per_bar(bars, y, [&bars, &last](size_t i) {
    if (bars.close[i] > bars.open[i]) last = i;
    return static_cast<double>(i - last);
  });
}

void rises_of_20(const Bars& bars, Series& y) {
  const auto rises = [&bars](size_t i) { return bars.close[i] > bars.open[i]; };
  int count = 0;
  per_bar(bars, y, [&count, &rises](size_t i) {
    count += rises(i);
    if (i >= 20) count -= rises(i - 20);
    return count;
  });
}

void five_bars_ago(const Bars& bars, Series& y) {
  per_bar(bars, y, [&bars](size_t i) { return i < 5 ? null : bars.close[i - 5]; });
}

void signed_volume(const Bars& bars, Series& y) {
  per_bar(bars, y, [&bars](size_t i) {
    const double step = bars.close[i] - bars.open[i];
    return step > 0.0 ? bars.volume[i] : step < 0.0 ? -bars.volume[i] : 0.0;
  });
}

void ten_averages(const Bars& bars, Series& y) {
  for (const size_t n : {5, 10, 20, 30, 40, 60, 90, 120, 180, 250}) {
    moving_average(bars.close, n, y);
  }
}

void macd(const Bars& bars, Series& y) {
  Series fast(bars.size());
  Series slow(bars.size());
  exponential_average(bars.close, 12, fast);
  exponential_average(bars.close, 26, slow);
  for (size_t i = 0; i < y.size(); ++i) fast[i] -= slow[i];
  exponential_average(fast, 9, slow);
  for (size_t i = 0; i < y.size(); ++i) y[i] = (fast[i] - slow[i]) * 2.0;
}

void kdj(const Bars& bars, Series& y) {
  Series low(bars.size());
  Series high(bars.size());
  lowest(bars.low, 9, low);
  highest(bars.high, 9, high);
  Series k(bars.size());
  Series d(bars.size());
  for (size_t i = 0; i < y.size(); ++i) {
    y[i] = (bars.close[i] - low[i]) / (high[i] - low[i]) * 100.0;
  }
  smoothed_average(y, 3, k);
  smoothed_average(k, 3, d);
  for (size_t i = 0; i < y.size(); ++i) y[i] = 3.0 * k[i] - 2.0 * d[i];
}

void rsi(const Bars& bars, Series& y) {
  Series gain(bars.size(), null);
  Series change(bars.size(), null);
  for (size_t i = 1; i < y.size(); ++i) {
    const double step = bars.close[i] - bars.close[i - 1];
    gain[i] = step < 0.0 ? 0.0 : step;
    change[i] = std::fabs(step);
  }
  Series gains(bars.size());
  Series changes(bars.size());
  smoothed_average(gain, 14, gains);
  smoothed_average(change, 14, changes);
  for (size_t i = 0; i < y.size(); ++i) y[i] = gains[i] / changes[i] * 100.0;
}

void boll(const Bars& bars, Series& y) {
  Series middle(bars.size());
  moving_average(bars.close, 20, middle);
  over_windows(bars.close, 20, y, population_deviation);
  for (size_t i = 0; i < y.size(); ++i) y[i] = middle[i] - 2.0 * y[i];
}

void obv(const Bars& bars, Series& y) {
  double sum = 0.0;
  y[0] = 0.0;
  for (size_t i = 1; i < y.size(); ++i) {
    const double step = bars.close[i] - bars.close[i - 1];
    sum += step > 0.0 ? bars.volume[i] : step < 0.0 ? -bars.volume[i] : 0.0;
    y[i] = sum;
  }
}

using B = const Bars&;

constexpr Yardstick table[] = {
    {Kind::average, "MA 20", "A:=MA(C,20);",
     [](B b, Series& y) { moving_average(b.close, 20, y); }},
    {Kind::average, "MA 20, a line", "A:MA(C,20);",
     [](B b, Series& y) { moving_average(b.close, 20, y); }},
    {Kind::average, "EMA 12", "A:=EMA(C,12);",
     [](B b, Series& y) { exponential_average(b.close, 12, y); }},
    {Kind::average, "SMA 14", "A:=SMA(C,14,1);",
     [](B b, Series& y) { smoothed_average(b.close, 14, y); }},
    {Kind::average, "WMA 20", "A:=WMA(C,20);",
     [](B b, Series& y) { over_windows(b.close, 20, y, weighted_mean); }},
    {Kind::statistic, "SUM 20", "A:=SUM(C,20);",
     [](B b, Series& y) { moving_sum(b.close, 20, y); }},
    {Kind::statistic, "STD 20", "A:=STD(C,20);",
     [](B b, Series& y) { over_windows(b.close, 20, y, deviation); }},
    {Kind::statistic, "AVEDEV 20", "A:=AVEDEV(C,20);",
     [](B b, Series& y) { over_windows(b.close, 20, y, mean_absolute_deviation); }},
    {Kind::statistic, "SLOPE 20", "A:=SLOPE(C,20);",
     [](B b, Series& y) { over_windows(b.close, 20, y, slope); }},
    {Kind::extreme, "HHV 20", "A:=HHV(H,20);", [](B b, Series& y) { highest(b.high, 20, y); }},
    {Kind::extreme, "HHV 250", "A:=HHV(H,250);", [](B b, Series& y) { highest(b.high, 250, y); }},
    {Kind::extreme, "LLV 1000", "A:=LLV(L,1000);", [](B b, Series& y) { lowest(b.low, 1000, y); }},
    {Kind::extreme, "HHVBARS 250", "A:=HHVBARS(H,250);",
     [](B b, Series& y) { bars_since_highest(b.high, 250, y); }},
    {Kind::arithmetic, "mean price", "A:(O+H+L+C)/4;", mean_price},
    {Kind::arithmetic, "rising with volume", "A:C>O AND V>1000;", rising_with_volume},
    {Kind::arithmetic, "close in range", "A:(C-L)/(H-L+0.01)*100;", close_in_range},
    {Kind::look_back, "CROSS of averages", "A:=CROSS(MA(C,5),MA(C,10));", crossing_averages},
    {Kind::look_back, "BARSLAST", "A:=BARSLAST(C>O);", bars_since_rise},
    {Kind::look_back, "COUNT 20", "A:=COUNT(C>O,20);", rises_of_20},
    {Kind::look_back, "REF 5", "A:=REF(C,5);", five_bars_ago},
    {Kind::look_back, "IF chain", "A:=IF(C>O,V,IF(C<O,0-V,0));", signed_volume},
    {Kind::indicator, "ten averages",
     "M1:MA(C,5);M2:MA(C,10);M3:MA(C,20);M4:MA(C,30);M5:MA(C,40);M6:MA(C,60);M7:MA(C,90);"
     "M8:MA(C,120);M9:MA(C,180);A:MA(C,250);",
     ten_averages},
    {Kind::indicator, "MACD", "DIF:EMA(C,12)-EMA(C,26);DEA:EMA(DIF,9);A:(DIF-DEA)*2,COLORSTICK;",
     macd},
    {Kind::indicator, "KDJ",
     "RSV:=(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;K:SMA(RSV,3,1);D:SMA(K,3,1);A:3*K-2*D;", kdj},
    {Kind::indicator, "RSI", "LC:=REF(C,1);A:SMA(MAX(C-LC,0),14,1)/SMA(ABS(C-LC),14,1)*100;", rsi},
    {Kind::indicator, "BOLL", "MID:MA(C,20);UP:MID+2*STDP(C,20);A:MID-2*STDP(C,20);", boll},
    {Kind::indicator, "OBV", "LC:=REF(C,1);A:SUM(IF(ISNULL(LC),0,IF(C>LC,V,IF(C<LC,0-V,0))),0);",
     obv},
};

}  // namespace

std::span<const Yardstick> yardsticks() { return table; }

}  // namespace quor_bench
