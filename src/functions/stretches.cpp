// Conditions over the last N bars, and one line crossing another.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "core/call.h"
#include "core/columns.h"
#include "core/reduce.h"
#include "functions/row_words.h"
#include "platform/processor.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// How a word reads the length of its stretch.
enum class Length {
  truncated,
  fractional,  ///< 2.5 means three bars
  unchecked,   ///< fractional, whatever the status of N
};

/// The bars of the stretch: never more than there are up to this bar, but a negative N stands for
/// the number of all rows, so that the walk goes on below row 0, where a field reads null.
double stretch_length(const Call& call, double period) {
  if (period < 0.0) return call.table().row_count();
  const double bars = call.row + 1.0;
  return period > bars ? bars : period;
}

/// Whether a bar decides that lies from `least` up to but without `bars` bars ago.
template <typename Decides>
Status any_bar(const Call& call, double least, double bars, bool& decided) {
  const int64_t newest = call.row - to_int64(least);
  if (!(bars > least) || newest < std::numeric_limits<int32_t>::min()) return Status::ok;
  const int64_t oldest = std::max<int64_t>(call.row - to_int64(std::ceil(bars)) + 1, no_row + 1);
  int32_t found = no_row;
  const Status status = newest_hit<Decides>(call, static_cast<int32_t>(newest), oldest, found);
  decided = found != no_row;
  return status;
}

/// 0.0 or 1.0: whether no bar of the stretch decides, or with `if_decided` whether one does.
template <typename Decides, Length length, size_t period_argument, bool if_decided>
class StretchWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan) return scan(call);
    double period = null_value;
    Status status = checked(call.evaluate(period_argument, period));
    if (failed(status)) return status;
    bool decided = false;
    status = any_bar<Decides>(call, 0.0, stretch_length(call, bars_of(period)), decided);
    if (failed(status)) return status;
    return call.answer(truth(decided == if_decided));
  }

  const double* column(const ColumnCall& call) const final {
    const std::optional<double> period = call.number(period_argument);
    if (!period || bars_of(*period) < 0.0) return nullptr;
    const double bars = std::min<double>(std::ceil(bars_of(*period)), call.rows.end);
    if (!(bars > 0.0)) return call.everywhere(truth(!if_decided));
    const NewestHit* deciding = newest_hits<Decides>(call, call.rows);
    if (deciding == nullptr) return nullptr;
    double* result = call.scratch();
    const int32_t first = call.rows.first - static_cast<int32_t>(bars);
    for (size_t i = 0; i < call.size(); ++i) {
      result[i] = truth((deciding[i].row > first + static_cast<int32_t>(i)) == if_decided);
    }
    return result;
  }
  ColumnTraits column_traits() const final {
    return {.leaves_state = false, .revisits = true, .series_count = period_argument};
  }

 private:
  static double bars_of(double period) {
    return length == Length::truncated ? to_int(period) : period;
  }

  static Status checked(Status status) { return length == Length::unchecked ? Status::ok : status; }

  static Status scan(const Call& call) {
    const Status status = call.check_count(period_argument + 1);
    return !failed(status) ? checked(raise_period_of(call, period_argument)) : status;
  }
};

bool is_positive(double x) { return x > 0.0; }
bool is_not_positive(double x) { return x <= 0.0; }
bool is_reached(double a, double b) { return b >= a; }
bool is_not_rising(double before, double value) { return before >= value; }
bool is_not_falling(double before, double value) { return value >= before; }

using IsPositive = OneValue<is_positive>;

using EXIST = StretchWord<IsPositive, Length::truncated, 1, true>;
using EVERY = StretchWord<OneValue<is_not_positive>, Length::fractional, 1, false>;
using NDAY = StretchWord<TwoValues<is_reached>, Length::truncated, 2, false>;
class UPNDAY final
    : public StretchWord<ValueAndBefore<is_not_rising>, Length::unchecked, 1, false> {
  using StretchWord::StretchWord;
};
class DOWNNDAY final
    : public StretchWord<ValueAndBefore<is_not_falling>, Length::truncated, 1, false> {
  using StretchWord::StretchWord;
};

/// Whether X was positive at one of the bars from B to A-1 bars ago.
class LAST final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return scan(call);
    double bars[2];
    for (size_t i = 0; i < 2; ++i) {
      double period = null_value;
      const Status status = call.evaluate(i + 1, period);
      if (failed(status)) return status;
      bars[i] = stretch_length(call, to_int(period));
    }
    bool found = false;
    const Status status = any_bar<IsPositive>(call, bars[1], bars[0], found);
    if (failed(status)) return status;
    return call.answer(truth(found));
  }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> oldest = call.number(1);
    const std::optional<double> newest = call.number(2);
    if (!oldest || !newest) return nullptr;
    const int32_t bars = to_int(*oldest);
    const int32_t least = to_int(*newest);
    if (bars < 0 || least < 0) return nullptr;
    if (bars <= least) return call.everywhere(0.0);
    if (least >= call.rows.first) return nullptr;
    const NewestHit* hits = newest_hits<IsPositive>(call, call.rows.shifted(-least));
    if (hits == nullptr) return nullptr;
    double* result = call.scratch();
    const int32_t first = call.rows.first - bars;
    for (size_t i = 0; i < call.size(); ++i) {
      result[i] = truth(hits[i].row > first + static_cast<int32_t>(i));
    }
    return result;
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false, .revisits = true}; }

 private:
  static Status scan(const Call& call) {
    const Status status = scan_period(call, 3, 1);
    return !failed(status) ? raise_period_of(call, 2) : status;
  }
};

/// Whether the argument at `from` has come to stand above the one at `over` with this bar. Touching
/// at the bar before counts as coming from the other side; row 0 is its own bar before.
template <size_t from, size_t over>
class Crossing : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan) return call.check_count(2);
    double now[] = {null_value, null_value};
    Status status = both_at(call, call.row, now);
    if (failed(status)) return status;
    double before[] = {null_value, null_value};
    status = both_at(call, std::max(call.row - 1, 0), before);
    if (failed(status)) return status;
    return call.answer(crosses(now[from], now[over], before[from], before[over]));
  }
  const double* column(const ColumnCall& call) const final {
    const Block rows{call.rows.first - 1, call.rows.end};
    if (!call.columns.run_pair(call.argument(0), call.argument(1), rows)) return nullptr;
    const double* lines[] = {call.values(0, rows), call.values(1, rows)};
    if (lines[0] == nullptr || lines[1] == nullptr) return nullptr;
    const double* a = lines[from];
    const double* b = lines[over];
    double* result = call.scratch();
    wherever_wide([=, size = call.size()] {
      for (size_t i = 0; i < size; ++i) result[i] = crosses(a[i + 1], b[i + 1], a[i], b[i]);
    });
    return result;
  }
  ColumnTraits column_traits() const final {
    return {.leaves_state = false, .revisits = true, .series_count = 2};
  }

 private:
  static double crosses(double a, double b, double a_before, double b_before) {
    return truth((a > b) & (b_before >= a_before));
  }

  static Status both_at(const Call& call, int32_t row, double (&values)[2]) {
    const Status status = call.evaluate_at(0, row, values[0]);
    return !failed(status) ? call.evaluate_at(1, row, values[1]) : status;
  }
};

using CROSS = Crossing<0, 1>;
using CROSSUP = Crossing<0, 1>;
using CROSSDOWN = Crossing<1, 0>;

constexpr WordRow stretch_rows[] = {
    word_row<EXIST>("EXIST", 26, steady | periods_from(1, follows_rows)),
    word_row<EVERY>("EVERY", 25, steady | periods_from(1, follows_rows)),
    word_row<NDAY>("NDAY", 39, steady | periods_from(2, follows_rows)),
    word_row<UPNDAY>("UPNDAY", 21, steady | periods_from(1, follows_rows)),
    word_row<DOWNNDAY>("DOWNNDAY", 6, steady | periods_from(1, follows_rows)),
    word_row<LAST>("LAST", 37, steady | periods_from(1, follows_rows)),
    word_row<CROSS>("CROSS", 23, steady),
    word_row<CROSSUP>("CROSSUP", 104, steady),
    word_row<CROSSDOWN>("CROSSDOWN", 103, steady),
};

}  // namespace

std::span<const WordRow> stretch_words() { return stretch_rows; }

}  // namespace quor
