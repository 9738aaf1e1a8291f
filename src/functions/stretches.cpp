// Conditions over the last N bars, and one line crossing another.
#include <algorithm>
#include <cmath>
#include <limits>

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
using Decides = int (*)(const Call& call, int32_t row, bool& decides);

/// Whether a bar decides that lies from `least` up to but without `bars` bars ago. The word's first
/// `arguments` arguments are what `decides_at` looks at.
template <Decides decides_at>
int any_bar(const Call& call, size_t arguments, double least, double bars, bool& decided) {
  const int64_t newest = call.row - to_int64(least);
  if (!(bars > least) || newest < std::numeric_limits<int32_t>::min()) return status_ok;
  const int64_t oldest = std::max<int64_t>(call.row - to_int64(std::ceil(bars)) + 1, no_row + 1);
  const auto decides = [&call](int32_t row, bool& decides_here) {
    return decides_at(call, row, decides_here);
  };
  const auto start = static_cast<int32_t>(newest);
  WalkSession session(call, arguments, start);
  int32_t found = no_row;
  const int status = session.newest(start, oldest, decides, found);
  decided = found != no_row;
  return status;
}

/// 0.0 or 1.0: whether no bar of the stretch decides, or with `if_decided` whether one does.
template <Decides decides_at, Length length, size_t period_argument, bool if_decided>
class StretchWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  int execute(const Call& call) const final {
    if (call.scan) return scan(call);
    double period = null_value;
    int status = checked(call.evaluate(period_argument, period));
    if (status != status_ok) return status;
    if (length == Length::truncated) period = to_int(period);
    bool decided = false;
    status = any_bar<decides_at>(call, period_argument, 0.0, stretch_length(call, period), decided);
    if (status != status_ok) return status;
    call.result = decided == if_decided ? 1.0 : 0.0;
    return status_ok;
  }

 private:
  static int checked(int status) { return length == Length::unchecked ? status_ok : status; }

  static int scan(const Call& call) {
    const int status = scan_count(call, period_argument + 1);
    return status == status_ok ? checked(raise_period_of(call, period_argument)) : status;
  }
};

int is_positive(const Call& call, int32_t row, bool& decides) {
  double value = null_value;
  const int status = call.evaluate_at(0, row, value);
  decides = value > 0.0;
  return status;
}

int is_not_positive(const Call& call, int32_t row, bool& decides) {
  double value = null_value;
  const int status = call.evaluate_at(0, row, value);
  decides = value <= 0.0;
  return status;
}

/// Whether the second argument reaches the first.
int is_reached(const Call& call, int32_t row, bool& decides) {
  double a = null_value;
  int status = call.evaluate_at(0, row, a);
  if (status != status_ok) return status;
  double b = null_value;
  status = call.evaluate_at(1, row, b);
  decides = b >= a;
  return status;
}

/// X at a bar and at the one before, which is 0.0 where there is none.
int step_at(const Call& call, int32_t row, double& value, double& before) {
  value = null_value;
  const int status = call.evaluate_at(0, row, value);
  if (status != status_ok) return status;
  before = row >= 1 ? null_value : 0.0;
  return row >= 1 ? call.evaluate_at(0, row - 1, before) : status_ok;
}

int is_not_rising(const Call& call, int32_t row, bool& decides) {
  double value;
  double before;
  const int status = step_at(call, row, value, before);
  if (status == status_ok) decides = before >= value;
  return status;
}

int is_not_falling(const Call& call, int32_t row, bool& decides) {
  double value;
  double before;
  const int status = step_at(call, row, value, before);
  if (status == status_ok) decides = value >= before;
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
  int execute(const Call& call) const override {
    if (call.scan) return scan(call);
    double bars[2];
    for (size_t i = 0; i < 2; ++i) {
      double period = null_value;
      const int status = call.evaluate(i + 1, period);
      if (status != status_ok) return status;
      bars[i] = stretch_length(call, to_int(period));
    }
    bool found = false;
    const int status = any_bar<is_positive>(call, 1, bars[1], bars[0], found);
    if (status != status_ok) return status;
    call.result = found ? 1.0 : 0.0;
    return status_ok;
  }

 private:
  static int scan(const Call& call) {
    const int status = scan_period(call, 3, 1);
    return status == status_ok ? raise_period_of(call, 2) : status;
  }
};

/// Whether the argument at `from` has come to stand above the one at `over` with this bar. Touching
/// at the bar before counts as coming from the other side; row 0 is its own bar before.
template <size_t from, size_t over>
class Crossing : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  int execute(const Call& call) const final {
    if (call.scan) return scan_count(call, 2);
    double now[] = {null_value, null_value};
    int status = both_at(call, call.row, now);
    if (status != status_ok) return status;
    double before[] = {null_value, null_value};
    status = both_at(call, std::max(call.row - 1, 0), before);
    if (status != status_ok) return status;
    call.result = now[from] > now[over] && before[over] >= before[from] ? 1.0 : 0.0;
    return status_ok;
  }

 private:
  static int both_at(const Call& call, int32_t row, double (&values)[2]) {
    const int status = call.evaluate_at(0, row, values[0]);
    return status == status_ok ? call.evaluate_at(1, row, values[1]) : status;
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
    word_row<EXIST>("EXIST"),   word_row<EVERY>("EVERY"),       word_row<NDAY>("NDAY"),
    word_row<UPNDAY>("UPNDAY"), word_row<DOWNNDAY>("DOWNNDAY"), word_row<LAST>("LAST"),
    word_row<CROSS>("CROSS"),   word_row<CROSSUP>("CROSSUP"),   word_row<CROSSDOWN>("CROSSDOWN"),
};

}  // namespace

std::span<const WordRow> stretch_words() { return words; }

}  // namespace quor
