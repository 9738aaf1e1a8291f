// Values of other bars, and what a script stores for itself.
#include <algorithm>
#include <limits>
#include <optional>

#include "core/call.h"
#include "core/columns.h"
#include "functions/row_words.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

constexpr size_t series_argument = 0;
constexpr size_t period_argument = 1;

/// X as many bars before (`sign` -1) or behind (`sign` 1) this one as N says; null outside the
/// table.
Status value_at_distance(const Call& call, int sign) {
  if (call.scan) return scan_period(call, 2, period_argument);
  double period = null_value;
  const Status status = call.evaluate(period_argument, period);
  if (failed(status)) return status;
  call.result = null_value;
  const int64_t row = call.row + int64_t{sign} * to_int(period);
  if (row < 0 || row >= call.table().row_count()) return Status::ok;
  return call.evaluate_at(series_argument, static_cast<int32_t>(row), call.result);
}

class REF final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override { return value_at_distance(call, -1); }
  const double* column(const ColumnCall& call) const override {
    const std::optional<double> period = call.number(period_argument);
    return period ? moved(call, to_int(*period)) : gathered(call);
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .revisits = true, .displaces = true};
  }

 private:
  static const double* moved(const ColumnCall& call, int32_t bars) {
    if (bars < 0 || bars >= call.rows.first) return nullptr;
    return call.values(series_argument, call.rows.shifted(-bars));
  }

  /// With a period of its own at each bar, all of them at or before their bar. The bars between
  /// those that are asked for are evaluated, too, so that they mustn't leave a trace.
  static const double* gathered(const ColumnCall& call) {
    const double* periods = call.values(period_argument);
    const Variable* x = call.argument(series_argument);
    if (periods == nullptr || x == nullptr || has_state(*x)) return nullptr;
    Block rows{call.rows.end, 0};
    for (size_t i = 0; i < call.size(); ++i) {
      const int64_t row = row_at_distance(call, i, periods[i]);
      if (row > call.rows.first + static_cast<int64_t>(i)) return nullptr;
      if (row < 0) continue;
      rows.first = std::min(rows.first, static_cast<int32_t>(row));
      rows.end = std::max(rows.end, static_cast<int32_t>(row) + 1);
    }
    if (rows.first >= rows.end) return call.everywhere(null_value);
    const bool far = rows.size() > most_rows_per_bar * call.size();
    if (far && x->kind != VariableKind::field) return nullptr;
    const double* values = call.values(series_argument, rows);
    if (values == nullptr) return nullptr;
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) {
      const int64_t row = row_at_distance(call, i, periods[i]);
      result[i] = row < 0 ? null_value : values[row - rows.first];
    }
    return result;
  }

  static constexpr size_t most_rows_per_bar = 4;

  /// A null leads nowhere.
  static int64_t row_at_distance(const ColumnCall& call, size_t place, double period) {
    const int32_t bars = to_int(period);
    if (bars == std::numeric_limits<int32_t>::min()) return -1;
    return call.rows.first + static_cast<int64_t>(place) - bars;
  }
};

class REFX final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override { return value_at_distance(call, 1); }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .revisits = true, .displaces = true};
  }
};

/// As REFX, but a row outside the table on either side is the last bar.
class REFX1 final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    double period = null_value;
    const Status status = call.evaluate(period_argument, period);
    if (failed(status)) return status;
    call.result = null_value;
    if (is_null(period)) return Status::ok;
    const int32_t rows = call.table().row_count();
    const uint64_t row =
        static_cast<uint64_t>(int64_t{call.row}) + static_cast<uint64_t>(to_int64(period));
    const bool inside = row < static_cast<uint64_t>(rows);
    return call.evaluate_at(series_argument, inside ? static_cast<int32_t>(row) : rows - 1,
                            call.result);
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .revisits = true, .displaces = true};
  }
};

/// X at the newest bar at which C holds.
class VALUEWHEN final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(2);
    call.result = null_value;
    const int32_t row = newest_one(call);
    if (row >= 0) ignore_status(call.evaluate_at(1, row, call.result));
    return Status::ok;
  }
  const double* column(const ColumnCall& call) const override {
    const double* x = call.values(1);
    const NewestHit* hits = x != nullptr ? newest_hits<IsOne>(call, call.rows) : nullptr;
    if (hits == nullptr) return nullptr;
    double* result = call.scratch();
    double value = value_before(call);
    for (size_t i = 0; i < call.size(); ++i) {
      const bool is_hit = hits[i].row == call.rows.first + static_cast<int32_t>(i);
      result[i] = value = is_hit ? x[i] : value;
    }
    return result;
  }
  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .passes_over = true, .passed_over_from = 1, .revisits = true};
  }

 private:
  /// The value at the newest hit before the block.
  static double value_before(const ColumnCall& call) {
    const auto& states = memory_of<RowStates<NewestHit>>(call.columns.pool().script, call.variable);
    const int32_t row = states.before(call.rows.first).row;
    std::string unread;
    double value = null_value;
    if (row >= 0) {
      ignore_status(
          call.columns.calculator().evaluate(*call.argument(1), row, false, unread, value));
    }
    return value;
  }
};

class GET final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    call.result = null_value;
    return call.evaluate(0, call.result);
  }
  const double* column(const ColumnCall& call) const override { return call.values(0); }
  ColumnTraits column_traits() const override { return {.leaves_state = false}; }
};

/// Takes its arguments in pairs of a target and an expression, in order; a target without a partner
/// is left alone.
class SET final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return Status::ok;
    for (size_t i = 0; i + 1 < call.argument_count(); i += 2) {
      double value = null_value;
      ignore_status(call.evaluate(i + 1, value));
      store(call, call.argument(i), value);
    }
    return call.answer(0.0);
  }
  ColumnTraits column_traits() const override { return at_own_bar; }

 private:
  static void store(const Call& call, Variable& target, double value) {
    if (target.kind == VariableKind::field) {
      call.table().set_cell(call.row, target.column_index, value);
    } else {
      target.value = value;
    }
  }
};

constexpr WordRow reference_rows[] = {
    word_row<REF>("REF", 66, steady | periods_from(1, reads_forward)),
    word_row<REFX>("REFX", 89, repeatable | reads_forward | in_full | told_ahead | period_at(1)),
    word_row<REFX1>("REFX1", 167, repeatable | reads_forward | in_full | told_ahead | period_at(1)),
    word_row<VALUEWHEN>("VALUEWHEN", 4, steady),
    word_row<GET>("GET", 68, steady),
    word_row<SET>("SET", 69, hides_state | sets_arguments),
};

}  // namespace

std::span<const WordRow> reference_words() { return reference_rows; }

}  // namespace quor
