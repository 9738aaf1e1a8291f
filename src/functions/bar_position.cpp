// Where a bar stands among the rows of the table.
#include "core/call.h"
#include "functions/families.h"
#include "functions/row_words.h"
#include "functions/series.h"

namespace quor {
namespace {

enum class InScan { computes, leaves_result };

/// A bare word whose value follows from the row and the number of rows.
template <double (*value_of)(const Call&), InScan in_scan>
class BarWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (in_scan == InScan::computes || !call.scan) call.result = value_of(call);
    return Status::ok;
  }
};

double last_row(const Call& call) { return call.table().row_count() - 1.0; }

double position_from_first(const Call& call) { return call.row + 1.0; }
double count_of_all(const Call& call) { return call.table().row_count(); }
double position_from_last(const Call& call) { return last_row(call) + 1.0 - call.row; }
double is_last(const Call& call) { return call.row == last_row(call) ? 1.0 : 0.0; }
double first_or_last(const Call& call) { return call.row == 0 ? 1.0 : 2.0 * is_last(call); }

class BARPOS final : public BarWord<position_from_first, InScan::computes> {
  using BarWord::BarWord;
};
class DATACOUNT final : public BarWord<count_of_all, InScan::computes> {
  using BarWord::BarWord;
};
class TOTALBARSCOUNT final : public BarWord<count_of_all, InScan::computes> {
  using BarWord::BarWord;
};
class CURRBARSCOUNT final : public BarWord<position_from_last, InScan::leaves_result> {
  using BarWord::BarWord;
};
class ISLASTBAR final : public BarWord<is_last, InScan::computes> {
  using BarWord::BarWord;
};
class BARSTATUS final : public BarWord<first_or_last, InScan::leaves_result> {
  using BarWord::BarWord;
};

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

constexpr WordRow words[] = {
    word_row<BARPOS>("BARPOS", steady),
    word_row<DATACOUNT>("DATACOUNT", follows_rows),
    word_row<TOTALBARSCOUNT>("TOTALBARSCOUNT", follows_rows),
    word_row<CURRBARSCOUNT>("CURRBARSCOUNT", follows_rows),
    word_row<ISLASTBAR>("ISLASTBAR", follows_rows),
    word_row<BARSTATUS>("BARSTATUS", follows_rows),
    word_row<BARSCOUNT>("BARSCOUNT", steady),
};

}  // namespace

std::span<const WordRow> bar_position_words() { return words; }

}  // namespace quor
