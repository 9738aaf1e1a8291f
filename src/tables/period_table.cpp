#include "tables/period_table.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "tables/word_set.h"

namespace quor {
namespace {

struct Pair {
  int32_t key;
  int32_t value;
};

std::optional<int32_t> find(std::span<const Pair> table, int32_t key) {
  const auto row = std::ranges::find(table, key, &Pair::key);
  if (row == table.end()) return std::nullopt;
  return row->value;
}

constexpr Pair PeriodCodeValue[] = {
    {0x3000, 1},  {0x3003, 2},  {0x3005, 3},  {0x300A, 4},  {0x300F, 5}, {0x301E, 6}, {0x303C, 7},
    {0x3105, 0},  {0x310A, 0},  {0x310F, 0},  {0x311E, 0},  {0x4000, 8}, {0x5000, 9}, {0x5001, 9},
    {0x6000, 10}, {0x6001, 10}, {0x6003, 15}, {0x7000, 11}, {0x7001, 11}};

constexpr Pair PeriodCodeClass[] = {{0x3000, 1}, {0x3105, 8}, {0x4000, 0}, {0x5000, 4},
                                    {0x5001, 4}, {0x6000, 5}, {0x6001, 5}, {0x6003, 6},
                                    {0x7000, 7}, {0x7001, 7}, {-2, 9}};

constexpr Pair PeriodClassRank[] = {{7, 100}, {6, 90}, {5, 80}, {4, 70}, {0, 60},
                                    {2, 50},  {1, 40}, {8, 30}, {9, 20}};

constexpr std::string_view minute_multiples[] = {"1", "3", "5", "10", "15", "30"};
constexpr std::string_view hour_multiples[] = {"1", "2", "3", "4"};
constexpr std::string_view single_multiple[] = {"1"};

struct Unit {
  std::string_view word;
  WordSet multiples;
  int32_t period_class;
};

constexpr Unit units[] = {
    {"MIN", WordSet(minute_multiples), 1},  {"HOUR", WordSet(hour_multiples), 2},
    {"DAY", WordSet(single_multiple), 0},   {"WEEK", WordSet(single_multiple), 4},
    {"MONTH", WordSet(single_multiple), 5},
};

constexpr std::string_view stock_markets[] = {"USHA", "USZA", "USHT", "USZP"};
constexpr WordSet StockMarketSet(stock_markets);

const Unit* find_unit(std::string_view word) {
  const auto unit = std::ranges::find(units, word, &Unit::word);
  return unit == std::end(units) ? nullptr : &*unit;
}

/// A range of host codes: codes from `from` up count their multiple from `base` and share the class
/// of `key`.
struct CodeRange {
  int32_t from;
  int32_t base;
  int32_t key;
};

// Tested from the top; 0x6003 stands for one unit of a class of its own.
constexpr CodeRange code_ranges[] = {{0x7000, 0x7000, 0x7000}, {0x6000, 0x6000, 0x6000},
                                     {0x5000, 0x5000, 0x5000}, {0x4000, 0x4000, 0x4000},
                                     {0x3101, 0x3100, 0x3105}, {0x3000, 0x3000, 0x3000}};

void decode_multiple(int32_t code, Period& period) {
  if (code == 0x6003) {
    period.multiple = 1;
    period.period_class = find(PeriodCodeClass, code).value_or(period.period_class);
    return;
  }
  const auto range =
      std::ranges::find_if(code_ranges, [code](const CodeRange& row) { return code >= row.from; });
  if (range == std::end(code_ranges)) {
    period.multiple = 1;
    return;
  }
  period.multiple = std::max(code - range->base, 1);
  period.period_class = find(PeriodCodeClass, range->key).value_or(period.period_class);
}

}  // namespace

void decode_period(int32_t code, Period& period) {
  if (code == 0) {
    period.value = -2;
    period.multiple = 1;
    return;
  }
  period.period_class = find(PeriodCodeClass, code).value_or(period.period_class);
  if (code < -1) {
    period.value = -1;
    period.multiple = 1;
    return;
  }
  period.value = find(PeriodCodeValue, code).value_or(-1);
  decode_multiple(code, period);
}

std::optional<int32_t> period_unit_class(std::string_view unit) {
  const Unit* row = find_unit(unit);
  if (row == nullptr) return std::nullopt;
  return row->period_class;
}

bool period_unit_allows(std::string_view unit, std::string_view multiple) {
  const Unit* row = find_unit(unit);
  return row != nullptr && row->multiples.contains(multiple);
}

int32_t period_class_rank(int32_t period_class) {
  return find(PeriodClassRank, period_class).value_or(0);
}

bool is_stock_market(std::string_view market) { return StockMarketSet.contains(market); }

}  // namespace quor
