// Bars that stand out from the N bars on each side of them.
#include <algorithm>

#include "core/call.h"
#include "functions/row_words.h"
#include "functions/series.h"
#include "functions/window_extremes.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The outermost value from the bar next to `row` to the one at `offset`; nulls are passed over.
/// Null if nothing was seen or if the side reaches out of the table.
template <Extreme extreme, typename Source>
double side_range(const Call& call, int64_t offset, const Source& source) {
  const int64_t end = call.row + offset;
  if (end < 0 || end >= call.table().row_count()) return null_value;
  const int32_t step = offset > 0 ? 1 : -1;
  double outermost = null_value;
  for (int32_t row = call.row; row != end;) {
    row += step;
    take_outer<extreme>(outermost, source(row));
  }
  return outermost;
}

template <Extreme extreme, typename Source>
double stands_out(const Call& call, int32_t bars, double value, const Source& source) {
  const double left = side_range<extreme>(call, -int64_t{bars}, source);
  const double right = side_range<extreme>(call, bars, source);
  return beats<extreme>(value, left) && beats<extreme>(value, right) ? 1.0 : 0.0;
}

/// The number of bars on each side; 0 gives null. In scan mode it is the look-back.
Status take_span(const Call& call, size_t position, int32_t& bars) {
  double span = null_value;
  const Status status = call.evaluate_passing_scan(position, span);
  if (failed(status)) return status;
  bars = is_null(span) ? 0 : to_int(span);
  if (bars == 0) call.result = null_value;
  if (call.scan && bars != 0) call.script().raise_period(bars);
  return Status::ok;
}

template <Extreme extreme, uint32_t field_id>
class FieldWave : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan && call.argument_count() != 1) return call.wrong_count();
    int32_t bars = 0;
    const Status status = take_span(call, 0, bars);
    if (failed(status) || call.scan || bars == 0) return status;
    const DataTable& table = call.table();
    const int32_t column = table.column_index_of(field_id);
    const auto field = [&table, column](int32_t row) { return table.cell(row, column); };
    return call.answer(stands_out<extreme>(call, bars, field(call.row), field));
  }
};

/// Takes a column for the call, already in scan mode, that it never fills.
template <Extreme extreme>
class SeriesWave : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    ensure_result_column(call);
    int32_t bars = 0;
    Status status = take_span(call, 1, bars);
    if (failed(status) || call.scan || bars == 0) return status;
    double value = null_value;
    status = call.evaluate(0, value);
    if (failed(status)) return status;
    const auto series = [&call](int32_t row) {
      double other;
      ignore_status(call.recall(0, row, other));
      return other;
    };
    return call.answer(stands_out<extreme>(call, bars, value, series));
  }
};

using WAVEPEAK = FieldWave<Extreme::greatest, high_column_id>;
using WAVEVALLEY = FieldWave<Extreme::smallest, low_column_id>;
using WAVEPEAK1 = SeriesWave<Extreme::greatest>;
using WAVEVALLEY1 = SeriesWave<Extreme::smallest>;

constexpr std::string_view high_field[] = {"HIGH"};
constexpr std::string_view low_field[] = {"LOW"};

constexpr WordRow wave_rows[] = {
    word_row<WAVEPEAK>("WAVEPEAK", 162, reads_forward | told_ahead, high_field),
    word_row<WAVEPEAK1>("WAVEPEAK1", 163, reads_forward | in_full | told_ahead),
    word_row<WAVEVALLEY>("WAVEVALLEY", 164, reads_forward | told_ahead, low_field),
    word_row<WAVEVALLEY1>("WAVEVALLEY1", 165, reads_forward | in_full | told_ahead),
};

}  // namespace

std::span<const WordRow> wave_words() { return wave_rows; }

}  // namespace quor
