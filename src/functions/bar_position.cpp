// Where a bar stands among the rows of the table.
#include "core/call.h"
#include "core/columns.h"
#include "core/reduce.h"
#include "functions/row_words.h"
#include "functions/series.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

enum class InScan { computes, leaves_result };

/// A bare word whose value follows from the row and the number of rows.
template <double (*value_of)(int32_t row, int32_t rows), InScan in_scan>
class BarWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (in_scan == InScan::computes || !call.scan) {
      call.result = value_of(call.row, call.table().row_count());
    }
    return Status::ok;
  }
  const double* column(const ColumnCall& call) const final {
    const int32_t rows = call.table().row_count();
    double* result = call.scratch();
    for (int32_t row = call.rows.first; row < call.rows.end; ++row) {
      result[row - call.rows.first] = value_of(row, rows);
    }
    return result;
  }
  ColumnTraits column_traits() const final { return {.leaves_state = false}; }
};

double position_from_first(int32_t row, int32_t) { return row + 1.0; }
double count_of_all(int32_t, int32_t rows) { return rows; }
double position_from_last(int32_t row, int32_t rows) { return static_cast<double>(rows) - row; }
double is_last(int32_t row, int32_t rows) { return truth(row == int64_t{rows} - 1); }
double first_or_last(int32_t row, int32_t rows) {
  return row == 0 ? 1.0 : 2.0 * is_last(row, rows);
}

using BARPOS = BarWord<position_from_first, InScan::computes>;
using DATACOUNT = BarWord<count_of_all, InScan::computes>;
using TOTALBARSCOUNT = BarWord<count_of_all, InScan::computes>;
using CURRBARSCOUNT = BarWord<position_from_last, InScan::leaves_result>;
using ISLASTBAR = BarWord<is_last, InScan::computes>;
using BARSTATUS = BarWord<first_or_last, InScan::leaves_result>;

/// Bars since X first had a value. The count lies in the call's own column; a null interrupts it.
class BARSCOUNT final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1, SIZE_MAX);
    ensure_result_column(call);
    double value = null_value;
    const Status status = call.evaluate(0, value);
    if (!failed(status)) count(call, value);
    return status;
  }
  const double* column(const ColumnCall& call) const override {
    const double* x = call.variable.has_column() ? call.values(0) : nullptr;
    if (x == nullptr) return nullptr;
    double* counts = call.overwrite(call.variable.column_index);
    double* result = call.scratch();
    double before = counts[-1];
    for (size_t i = 0; i < call.size(); ++i) {
      const bool counted = !is_null(x[i]) && !is_null(before);
      const double count = counted ? before + 1.0 : 0.0;
      result[i] = counted ? count : call.start;
      before = counts[i] = is_null(x[i]) ? null_value : count;
    }
    return result;
  }
  ColumnTraits column_traits() const override { return {.keeps_start = true}; }
  bool reads_argument(size_t position) const override { return position == 0; }

 private:
  /// The caller's start value stands at a null and at the first bar behind it.
  static void count(const Call& call, double value) {
    DataTable& table = call.table();
    const int32_t column = call.variable.column_index;
    const double before = table.cell(int64_t{call.row} - 1, column);
    if (is_null(value)) {
      table.set_cell(call.row, column, null_value);
    } else if (is_null(before)) {
      table.set_cell(call.row, column, 0.0);
    } else {
      call.result = before + 1.0;
      table.set_cell(call.row, column, call.result);
    }
  }
};

constexpr WordRow bar_position_rows[] = {
    word_row<BARPOS>("BARPOS", 112, steady | bare),
    word_row<DATACOUNT>("DATACOUNT", 205, repeatable | follows_rows | bare | in_full),
    word_row<TOTALBARSCOUNT>("TOTALBARSCOUNT", 115, repeatable | follows_rows | bare | in_full),
    word_row<CURRBARSCOUNT>("CURRBARSCOUNT", 0, repeatable | follows_rows | bare | in_full),
    word_row<ISLASTBAR>("ISLASTBAR", 110, repeatable | follows_rows | bare),
    word_row<BARSTATUS>("BARSTATUS", 102, repeatable | follows_rows | bare),
    word_row<BARSCOUNT>("BARSCOUNT", 1, steady),
};

}  // namespace

std::span<const WordRow> bar_position_words() { return bar_position_rows; }

}  // namespace quor
