// Signals held back after a signal, and bars marked before one.
#include <algorithm>

#include "core/call.h"
#include "functions/row_words.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// Lets a signal through and holds back those of the next N bars. The call's `value` is the row up
/// to which signals are held back. A bar calculated again finds its own row there and repeats its
/// answer. Row 0 starts over and never signals; a null counts as a signal.
class FILTER final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return scan_period(call, 2, 1);
    if (call.row == 0) {
      call.variable.value = 0.0;
      return call.answer(0.0);
    }
    double period = null_value;
    Status status = call.evaluate(1, period);
    if (failed(status)) return status;
    double signal = null_value;
    status = call.evaluate(0, signal);
    if (!failed(status)) call.result = pass(call, signal, to_int(period));
    return status;
  }
  /// Not at row 0, in whatever order its bars are evaluated.
  ColumnTraits column_traits() const override { return {.starts_late = true}; }

 private:
  static double pass(const Call& call, double signal, int32_t bars) {
    if (bars < 0) bars = call.table().row_count();
    const int32_t own_end = wrapping_add(call.row, bars);
    const int32_t held_to = to_int(call.variable.value);
    if (signal == 0.0) {
      if (own_end == held_to) call.variable.value = 0.0;
      return 0.0;
    }
    if (call.row <= held_to && own_end != held_to) return 0.0;
    call.variable.value = own_end;
    return 1.0;
  }
};

/// The pass of BACKSET over all rows. A step is a row counted from where the walk starts: at the
/// last row and downward, or at the first and upward.
///
/// A mark that a walk would set over and over is set once, so that the pass takes as many writes as
/// there are rows whatever N says: `ahead_` and the runs remember what is marked already. The runs
/// behind the walk lie on the scratch stack as pairs of a first and a last step, the nearest on
/// top.
class MarkingPass {
 public:
  MarkingPass(const Call& call, bool upward)
      : call_(call),
        table_(call.table()),
        column_(call.variable.column_index),
        last_(int64_t{call.table().row_count()} - 1),
        upward_(upward),
        runs_(call.calculator.scratch().values),
        runs_begin_(runs_.size()) {}

  Status run() {
    Status status = Status::ok;
    for (int64_t step = 0; step <= last_ && !failed(status); ++step) status = take(step);
    runs_.resize(runs_begin_);
    return status;
  }

 private:
  int32_t row_of(int64_t step) const { return static_cast<int32_t>(upward_ ? step : last_ - step); }
  void mark(int64_t step) { table_.set_cell(row_of(step), column_, 1.0); }

  Status take(int64_t step) {
    const int32_t row = row_of(step);
    double signal = 0.0;
    Status status = call_.evaluate_at(0, row, signal);
    if (failed(status)) return status;
    double period = 0.0;
    status = call_.evaluate_at(1, row, period);
    if (failed(status)) return status;
    if (period == 0.0 || is_null(period)) {
      table_.set_cell(row, column_, null_value);
    } else if (signal != 0.0) {
      mark_from(step, to_int(period));
    } else if (table_.cell(row, column_) != 1.0) {
      // A mark that a later bar has set survives.
      table_.set_cell(row, column_, 0.0);
    }
    return Status::ok;
  }

  /// Marks the bars that end at a row for positive counts, those that begin there for negative
  /// ones.
  void mark_from(int64_t step, int32_t bars) {
    if (bars == 0) return;
    const int64_t length = bars > 0 ? int64_t{bars} : -int64_t{bars};
    if ((bars > 0) != upward_) {
      mark_ahead(step, std::min(step + length - 1, last_));
    } else {
      mark_behind(std::max(step - length + 1, int64_t{0}), step);
    }
  }

  void mark_ahead(int64_t step, int64_t last) {
    mark(step);
    for (int64_t at = std::max(step, ahead_) + 1; at <= last; ++at) mark(at);
    ahead_ = std::max(ahead_, last);
  }

  void mark_behind(int64_t first, int64_t step) {
    int64_t at = step;
    while (at >= first) {
      const bool has_run = runs_.size() > runs_begin_;
      const int64_t run_last = has_run ? static_cast<int64_t>(runs_.back()) : -1;
      for (; at >= first && at > run_last; --at) mark(at);
      if (at < first) break;
      at = static_cast<int64_t>(runs_[runs_.size() - 2]) - 1;
      runs_.resize(runs_.size() - 2);
    }
    runs_.push_back(static_cast<double>(at + 1));
    runs_.push_back(static_cast<double>(step));
  }

  const Call& call_;
  DataTable& table_;
  int32_t column_;
  int64_t last_;
  bool upward_;
  int64_t ahead_ = -1;  ///< all steps behind the current one up to this one are marked
  std::vector<double>& runs_;
  size_t runs_begin_;
};

/// Marks the N bars that end at a bar where X holds. The column holds the marks, which one pass at
/// row 0 sets; marks of an earlier run count as marks.
class BACKSET final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return scan(call);
    if (call.row == 0) {
      double period = 0.0;
      Status status = call.evaluate(1, period);
      if (!failed(status)) status = MarkingPass(call, period < 0.0).run();
      if (failed(status)) return status;
    }
    return call.answer(call.table().cell(call.row, call.variable.column_index));
  }

 private:
  static Status scan(const Call& call) {
    Status status = call.check_count(2);
    if (failed(status)) return status;
    double period = null_value;
    status = call.evaluate_passing_scan(1, period);
    if (!failed(status)) call.script().raise_period(to_int(period));
    return status;
  }
};

constexpr WordRow signal_mark_rows[] = {
    word_row<FILTER>("FILTER", 76, looks_back | hides_state | periods_from(1, follows_rows)),
    word_row<BACKSET>("BACKSET", 166,
                      repeatable | reads_forward | follows_rows | has_result_column | in_full |
                          told_ahead | period_at(1))};

}  // namespace

std::span<const WordRow> signal_mark_words() { return signal_mark_rows; }

}  // namespace quor
