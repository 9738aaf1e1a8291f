#include "peers.h"

#include <cstdio>
#include <cstdlib>
#include <span>

#ifdef QUOR_TA_LIB
#include <ta-lib/ta_libc.h>
#endif
#ifdef QUOR_EXPRTK
#include <exprtk.hpp>
#endif

namespace quor_bench {
namespace {

struct Peer {
  std::string_view name;
  LoopOverLines loop;
};

#ifdef QUOR_TA_LIB
/// Where a function says that its values begin.
struct Begin {
  int row = 0;
  int count = 0;
};

void expect_success(TA_RetCode code) {
  if (code == TA_SUCCESS) return;
  std::fprintf(stderr, "the TA library fails with %d\n", static_cast<int>(code));
  std::exit(1);
}

int last_row(const Bars& bars) { return static_cast<int>(bars.size()) - 1; }

void mean(const Bars& bars, int n, Series& y) {
  Begin begin;
  expect_success(TA_MA(0, last_row(bars), bars.close.data(), n, TA_MAType_SMA, &begin.row,
                       &begin.count, y.data()));
}

void deviation(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(TA_STDDEV(0, last_row(bars), bars.close.data(), 20, 1.0, &begin.row, &begin.count,
                           lines[0].data()));
}

void bands(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(TA_BBANDS(0, last_row(bars), bars.close.data(), 20, 2.0, 2.0, TA_MAType_SMA,
                           &begin.row, &begin.count, lines[1].data(), lines[0].data(),
                           lines[2].data()));
}

void sum(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(
      TA_SUM(0, last_row(bars), bars.volume.data(), 20, &begin.row, &begin.count, lines[0].data()));
}

void strength(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(
      TA_RSI(0, last_row(bars), bars.close.data(), 14, &begin.row, &begin.count, lines[0].data()));
}

void stochastic(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(TA_STOCH(0, last_row(bars), bars.high.data(), bars.low.data(), bars.close.data(),
                          9, 3, TA_MAType_SMA, 3, TA_MAType_SMA, &begin.row, &begin.count,
                          lines[0].data(), lines[1].data()));
  for (size_t i = 0; i < bars.size(); ++i) lines[2][i] = 3.0 * lines[0][i] - 2.0 * lines[1][i];
}

void convergence(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(TA_MACD(0, last_row(bars), bars.close.data(), 12, 26, 9, &begin.row, &begin.count,
                         lines[0].data(), lines[1].data(), lines[2].data()));
}

void crossing(const Bars& bars, std::span<Series> lines) {
  mean(bars, 5, lines[1]);
  mean(bars, 10, lines[2]);
  // The longer mean begins five rows later.
  const double* fast = lines[1].data() + 5;
  const double* slow = lines[2].data();
  for (size_t i = 1; i + 10 < bars.size(); ++i) {
    lines[0][i] = fast[i] > slow[i] && slow[i - 1] >= fast[i - 1] ? 1.0 : 0.0;
  }
}

void means(const Bars& bars, std::span<Series> lines) {
  mean(bars, 5, lines[0]);
  mean(bars, 10, lines[1]);
  mean(bars, 20, lines[2]);
  mean(bars, 60, lines[3]);
}

void highest(const Bars& bars, std::span<Series> lines) {
  Begin begin;
  expect_success(
      TA_MAX(0, last_row(bars), bars.high.data(), 20, &begin.row, &begin.count, lines[0].data()));
}
#endif

#ifdef QUOR_EXPRTK
class PriceFormula {
 public:
  PriceFormula() {
    symbols_.add_variable("o", open_);
    symbols_.add_variable("h", high_);
    symbols_.add_variable("l", low_);
    symbols_.add_variable("c", close_);
    expression_.register_symbol_table(symbols_);
    if (exprtk::parser<double>().compile("(h+l+2*c)/4-o", expression_)) return;
    std::fprintf(stderr, "ExprTk doesn't compile the formula\n");
    std::exit(1);
  }

  void over(const Bars& bars, Series& y) {
    for (size_t i = 0; i < bars.size(); ++i) {
      open_ = bars.open[i];
      high_ = bars.high[i];
      low_ = bars.low[i];
      close_ = bars.close[i];
      y[i] = expression_.value();
    }
  }

 private:
  double open_ = 0.0;
  double high_ = 0.0;
  double low_ = 0.0;
  double close_ = 0.0;
  exprtk::symbol_table<double> symbols_;
  exprtk::expression<double> expression_;
};

void price(const Bars& bars, std::span<Series> lines) {
  static PriceFormula formula;
  formula.over(bars, lines[0]);
}
#endif

constexpr Peer table[] = {
#ifdef QUOR_TA_LIB
    {"STD", deviation},  {"BOLL", bands},     {"SUM", sum},
    {"RSI", strength},   {"KDJ", stochastic}, {"MACD", convergence},
    {"CROSS", crossing}, {"MA x 4", means},   {"HHV", highest},
#endif
#ifdef QUOR_EXPRTK
    {"price", price},
#endif
    {"", nullptr},
};

}  // namespace

LoopOverLines peer_of(std::string_view name) {
#ifdef QUOR_TA_LIB
  static const TA_RetCode started = TA_Initialize();
  expect_success(started);
#endif
  for (const Peer& peer : table) {
    if (peer.name == name) return peer.loop;
  }
  return nullptr;
}

}  // namespace quor_bench
