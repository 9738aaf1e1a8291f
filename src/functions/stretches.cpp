// Conditions over the last N bars, and one line crossing another.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/call.h"
#include "core/columns.h"
#include "core/reduce.h"
#include "functions/families.h"
#include "functions/row_words.h"

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

/// Looks at one bar of the stretch: whether it decides the result.
using Decides = Status (*)(const Call& call, int32_t row, bool& decides);

/// Whether a bar decides that lies from `least` up to but without `bars` bars ago. The word's first
/// `arguments` arguments are what `decides_at` looks at.
template <Decides decides_at>
Status any_bar(const Call& call, size_t arguments, double least, double bars, bool& decided) {
  const int64_t newest = call.row - to_int64(least);
  if (!(bars > least) || newest < std::numeric_limits<int32_t>::min()) return Status::ok;
  const int64_t oldest = std::max<int64_t>(call.row - to_int64(std::ceil(bars)) + 1, no_row + 1);
  const auto decides = [&call](int32_t row, bool& decides_here) {
    return decides_at(call, row, decides_here);
  };
  const auto start = static_cast<int32_t>(newest);
  WalkSession session(call, arguments, start);
  int32_t found = no_row;
  const Status status = session.newest(start, oldest, decides, found);
  decided = found != no_row;
  return status;
}

/// 0.0 or 1.0: whether no bar of the stretch decides, or with `if_decided` whether one does.
template <Decides decides_at, Length length, size_t period_argument, bool if_decided>
class StretchWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan) return scan(call);
    double period = null_value;
    Status status = checked(call.evaluate(period_argument, period));
    if (failed(status)) return status;
    if (length == Length::truncated) period = to_int(period);
    bool decided = false;
    status = any_bar<decides_at>(call, period_argument, 0.0, stretch_length(call, period), decided);
    if (failed(status)) return status;
    return call.answer(decided == if_decided ? 1.0 : 0.0);
  }

 private:
  static Status checked(Status status) { return length == Length::unchecked ? Status::ok : status; }

  static Status scan(const Call& call) {
    const Status status = call.check_count(period_argument + 1);
    return !failed(status) ? checked(raise_period_of(call, period_argument)) : status;
  }
};

Status is_positive(const Call& call, int32_t row, bool& decides) {
  double value = null_value;
  const Status status = call.evaluate_at(0, row, value);
  decides = value > 0.0;
  return status;
}

Status is_not_positive(const Call& call, int32_t row, bool& decides) {
  double value = null_value;
  const Status status = call.evaluate_at(0, row, value);
  decides = value <= 0.0;
  return status;
}

/// Whether the second argument reaches the first.
Status is_reached(const Call& call, int32_t row, bool& decides) {
  double a = null_value;
  Status status = call.evaluate_at(0, row, a);
  if (failed(status)) return status;
  double b = null_value;
  status = call.evaluate_at(1, row, b);
  decides = b >= a;
  return status;
}

/// X at a bar and at the one before, which is 0.0 where there is none.
Status step_at(const Call& call, int32_t row, double& value, double& before) {
  value = null_value;
  const Status status = call.evaluate_at(0, row, value);
  if (failed(status)) return status;
  before = row >= 1 ? null_value : 0.0;
  return row >= 1 ? call.evaluate_at(0, row - 1, before) : Status::ok;
}

Status is_not_rising(const Call& call, int32_t row, bool& decides) {
  double value;
  double before;
  const Status status = step_at(call, row, value, before);
  if (!failed(status)) decides = before >= value;
  return status;
}

Status is_not_falling(const Call& call, int32_t row, bool& decides) {
  double value;
  double before;
  const Status status = step_at(call, row, value, before);
  if (!failed(status)) decides = value >= before;
  return status;
}

class EXIST final : public StretchWord<is_positive, Length::truncated, 1, true> {
  using StretchWord::StretchWord;
};
class EVERY final : public StretchWord<is_not_positive, Length::fractional, 1, false> {
  using StretchWord::StretchWord;
};
class NDAY final : public StretchWord<is_reached, Length::truncated, 2, false> {
  using StretchWord::StretchWord;
};
class UPNDAY final : public StretchWord<is_not_rising, Length::unchecked, 1, false> {
  using StretchWord::StretchWord;
};
class DOWNNDAY final : public StretchWord<is_not_falling, Length::truncated, 1, false> {
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
    const Status status = any_bar<is_positive>(call, 1, bars[1], bars[0], found);
    if (failed(status)) return status;
    return call.answer(found ? 1.0 : 0.0);
  }

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
    if (call.rows.first < 2) return nullptr;
    const Block rows{call.rows.first - 1, call.rows.end};
    const double* lines[] = {call.values(0, rows), call.values(1, rows)};
    if (lines[0] == nullptr || lines[1] == nullptr) return nullptr;
    const double* a = lines[from];
    const double* b = lines[over];
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) result[i] = crosses(a[i + 1], b[i + 1], a[i], b[i]);
    return result;
  }
  ColumnTraits column_traits() const final {
    return {.by_columns = true, .keeps_state = false, .revisits = true};
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

class CROSS final : public Crossing<0, 1> {
  using Crossing::Crossing;
};
class CROSSUP final : public Crossing<0, 1> {
  using Crossing::Crossing;
};
class CROSSDOWN final : public Crossing<1, 0> {
  using Crossing::Crossing;
};

constexpr WordRow words[] = {
    word_row<EXIST>("EXIST", steady | periods_from(1, follows_rows)),
    word_row<EVERY>("EVERY", steady | periods_from(1, follows_rows)),
    word_row<NDAY>("NDAY", steady | periods_from(2, follows_rows)),
    word_row<UPNDAY>("UPNDAY", steady | periods_from(1, follows_rows)),
    word_row<DOWNNDAY>("DOWNNDAY", steady | periods_from(1, follows_rows)),
    word_row<LAST>("LAST", steady | periods_from(1, follows_rows) | late_by(2)),
    word_row<CROSS>("CROSS", steady),
    word_row<CROSSUP>("CROSSUP", steady),
    word_row<CROSSDOWN>("CROSSDOWN", steady),
};

}  // namespace

std::span<const WordRow> stretch_words() { return words; }

}  // namespace quor
