// The zigzag line and its peaks and troughs.
//
// One pass at row 0 looks at all rows and leaves in columns of the call, per row: the row of the
// running extreme, slope and intercept of the leg through a turn, a flag and the value at a turn.
// Later rows only read. Nothing clears the columns before a pass: what an earlier run left at a row
// that this one doesn't write stays.
#include <algorithm>
#include <cmath>
#include <vector>

#include "core/call.h"
#include "core/column_owners.h"
#include "functions/row_words.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

enum AuxColumn : size_t {
  turn_row_column,
  slope_column,
  intercept_column,
  turn_flag_column,
  turn_value_column,  ///< of the peak and trough words; ZIGZAG has it as its result column
};

enum class Direction { unknown, rising, falling };

enum class StepResult { nothing, new_turn, moved_turn };

/// A straight line by its slope and its value at row 0.
struct Leg {
  double slope = 0.0;
  double intercept = 0.0;
};

/// Finds the turns of a series, bar by bar.
class ZigzagTracker {
 public:
  /// A swing from the running extreme counts from `swing` on, in percent of it or as a distance.
  ZigzagTracker(double swing, bool percent) : swing_(swing), percent_(percent) {}

  double extreme_row() const { return extreme_row_; }

  StepResult zig_step(int32_t row, double value, Leg& leg) {
    if (row == 0) {
      extreme_ = pivot_ = value;
      direction_ = Direction::unknown;
      leg.slope = null_value;
      return StepResult::new_turn;
    }
    if (reaches_swing(value)) {
      leg = leg_from(extreme_row_, extreme_, row, value);
      const Direction direction = leg.slope >= 0.0 ? Direction::rising : Direction::falling;
      if (direction_ != direction) {
        direction_ = direction;
        pivot_row_ = extreme_row_;
        pivot_ = extreme_;
        extreme_row_ = row;
        extreme_ = value;
        return StepResult::new_turn;
      }
    }
    if ((direction_ == Direction::rising && value > extreme_) ||
        (direction_ == Direction::falling && extreme_ > value)) {
      extreme_ = value;
      extreme_row_ = row;
      leg = leg_from(pivot_row_, pivot_, row, value);
      return StepResult::moved_turn;
    }
    leg = leg_from(extreme_row_, extreme_, row, value);
    return StepResult::nothing;
  }

 private:
  bool reaches_swing(double value) const {
    const double distance = extreme_ - value;
    return std::fabs(percent_ ? distance / extreme_ * 100.0 : distance) >= swing_;
  }

  static Leg leg_from(double from_row, double from, double row, double value) {
    const double slope = (value - from) / (row - from_row);
    return {slope, value - row * slope};
  }

  double swing_;
  bool percent_;
  // A null at row 0 passes the start over; then a rising leg from these zeros is taken as running.
  Direction direction_ = Direction::rising;
  double extreme_ = 0.0;
  double extreme_row_ = 0.0;
  double pivot_ = 0.0;
  double pivot_row_ = 0.0;
};

/// The columns of one call: its auxiliary ones and the one for the values at the turns.
class ZigzagColumns {
 public:
  ZigzagColumns(const Call& call, int32_t turn_value)
      : table_(call.table()), aux_(call.variable.aux_column_indexes), turn_value_(turn_value) {}

  double aux(int32_t row, AuxColumn column) const { return table_.cell(row, aux_[column]); }
  double turn_value(int32_t row) const { return table_.cell(row, turn_value_); }

  void set_extreme_row(int32_t row, double extreme_row) { set(row, turn_row_column, extreme_row); }
  void set_value(int32_t row, double value) { table_.set_cell(row, turn_value_, value); }
  void set_flag(int32_t row) { set(row, turn_flag_column, 1.0); }
  void set_point(int32_t row, const Leg& leg, double value) {
    set(row, slope_column, leg.slope);
    set(row, intercept_column, leg.intercept);
    set_value(row, value);
  }
  void clear_turn(int32_t row) {
    set_point(row, {null_value, null_value}, null_value);
    set(row, turn_flag_column, null_value);
  }

 private:
  void set(int32_t row, AuxColumn column, double value) {
    table_.set_cell(row, aux_[column], value);
  }

  DataTable& table_;
  const std::vector<int32_t>& aux_;
  int32_t turn_value_;
};

/// Takes one bar of the pass. The last row always holds a point of the line, with a flag only if it
/// is a turn.
void take_bar(ZigzagTracker& tracker, ZigzagColumns& columns, int32_t row, double value,
              bool is_last) {
  Leg leg;
  const StepResult step = tracker.zig_step(row, value, leg);
  columns.set_extreme_row(row, tracker.extreme_row());
  if (step == StepResult::nothing && !is_last) {
    columns.set_value(row, null_value);
    return;
  }
  if (step == StepResult::moved_turn) {
    columns.clear_turn(to_int(columns.aux(row - 1, turn_row_column)));
  }
  columns.set_point(row, leg, value);
  if (step != StepResult::nothing) columns.set_flag(row);
}

/// Fills the columns at all rows. Gives false, and writes nothing, if the swing or its type is
/// null.
bool zigzag_pass(const Call& call, size_t type_argument, ZigzagColumns columns) {
  double swing = null_value;
  ignore_status(call.evaluate_at(1, 0, swing));
  if (is_null(swing)) return false;
  double type = null_value;
  ignore_status(call.evaluate_at(type_argument, 0, type));
  if (is_null(type)) return false;
  ZigzagTracker tracker(std::fabs(swing), type == 1.0);
  const int32_t rows = call.table().row_count();
  for (int32_t row = 0; row < rows; ++row) {
    double value = null_value;
    ignore_status(call.evaluate_at(0, row, value));
    if (!is_null(value)) take_bar(tracker, columns, row, value, row == rows - 1);
  }
  return true;
}

/// One more column where X has none of its own; nobody reads it, but hosts count column ids.
void reserve_turn_columns(const Call& call, size_t count) {
  if (!call.variable.aux_column_ids.empty()) return;
  reserve_columns(call.variable, call.argument(0).has_column() ? count : count + 1);
}

/// ZIG has no working form; ZIGZAG is the word to use.
class ZIG final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override { return call.fail(Status::zig); }
};

/// The values at the turns and straight lines between them.
class ZIGZAG final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(3);
    reserve_turn_columns(call, 4);
    ZigzagColumns columns(call, call.variable.column_index);
    if (call.row == 0) {
      if (!zigzag_pass(call, 2, columns)) {
        return call.answer(null_value);
      }
      draw_legs(columns, call.table().row_count());
    }
    return call.answer(columns.turn_value(call.row));
  }

 private:
  static void draw_legs(ZigzagColumns& columns, int32_t rows) {
    int32_t last = 0;
    for (int32_t row = 1; row < rows; ++row) {
      if (is_null(columns.turn_value(row))) continue;
      const double slope = columns.aux(row, slope_column);
      const double intercept = columns.aux(row, intercept_column);
      for (int32_t j = last + 1; j < row; ++j) columns.set_value(j, j * slope + intercept);
      last = row;
    }
  }
};

enum class Turn { peak, trough };
enum class Output { value, distance };

/// The M-th last turn of one kind up to this bar. A peak ends a rising leg, a trough a falling one.
template <Turn turn, Output output>
class TurnWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan) return call.check_count(4);
    reserve_turn_columns(call, 5);
    const ZigzagColumns columns(call, call.variable.aux_column_indexes[turn_value_column]);
    call.result = null_value;
    if (call.row == 0) {
      turns_of(call).cut(0);
      if (!zigzag_pass(call, 3, columns)) return Status::ok;
    }
    double wanted = null_value;
    ignore_status(call.evaluate(2, wanted));
    wanted = std::fabs(wanted);
    find(call, columns, wanted == 0.0 ? 1.0 : wanted);
    return Status::ok;
  }

 private:
  /// The rows of the turns in the rows before `end`.
  struct TurnRows final : CallMemory {
    int32_t end = 0;
    std::vector<int32_t> rows;

   private:
    void drop_from(int32_t row) override {
      end = std::min(end, row);
      while (!rows.empty() && rows.back() >= row) rows.pop_back();
    }
  };

  static TurnRows& turns_of(const Call& call) {
    return memory_of<TurnRows>(call.script(), call.variable);
  }

  /// A fraction is never reached.
  static void find(const Call& call, const ZigzagColumns& columns, double wanted) {
    const std::vector<int32_t>& turns = turns_up_to(call, columns);
    auto end = turns.end();
    if (!turns.empty() && turns.back() > call.row) end = std::ranges::upper_bound(turns, call.row);
    if (!(wanted <= static_cast<double>(end - turns.begin()))) return;
    if (wanted != std::floor(wanted)) return;
    const int32_t row = *(end - static_cast<ptrdiff_t>(wanted));
    call.result = output == Output::value ? columns.turn_value(row) : call.row - row;
  }

  /// All turns up to the call's row, maybe followed by later ones.
  static const std::vector<int32_t>& turns_up_to(const Call& call, const ZigzagColumns& columns) {
    TurnRows& turns = turns_of(call);
    const int32_t last = std::min(call.row, call.table().row_count() - 1);
    for (; turns.end <= last; ++turns.end) {
      if (is_turn(columns, turns.end)) turns.rows.push_back(turns.end);
    }
    return turns.rows;
  }

  static bool is_turn(const ZigzagColumns& columns, int32_t row) {
    if (columns.aux(row, turn_flag_column) != 1.0) return false;
    const double slope = columns.aux(row, slope_column);
    return turn == Turn::peak ? slope > 0.0 : slope < 0.0;
  }
};

using PEAK = TurnWord<Turn::peak, Output::value>;
using PEAKBARS = TurnWord<Turn::peak, Output::distance>;
using TROUGH = TurnWord<Turn::trough, Output::value>;
using TROUGHBARS = TurnWord<Turn::trough, Output::distance>;

constexpr WordRow zigzag_rows[] = {
    word_row<ZIG>("ZIG", 72, can_fail),
    word_row<ZIGZAG>("ZIGZAG", 171,
                     reads_forward | follows_rows | has_result_column | in_full | told_ahead),
    word_row<PEAK>("PEAK", 167, repeatable | reads_forward | follows_rows | in_full | told_ahead),
    word_row<PEAKBARS>("PEAKBARS", 168,
                       repeatable | reads_forward | follows_rows | in_full | told_ahead),
    word_row<TROUGH>("TROUGH", 169,
                     repeatable | reads_forward | follows_rows | in_full | told_ahead),
    word_row<TROUGHBARS>("TROUGHBARS", 170,
                         repeatable | reads_forward | follows_rows | in_full | told_ahead),
};

}  // namespace

std::span<const WordRow> zigzag_words() { return zigzag_rows; }

}  // namespace quor
