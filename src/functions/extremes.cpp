// The greatest and the smallest value of the last bars, and how long ago it was.
#include <algorithm>

#include "core/call.h"
#include "functions/call_memory.h"
#include "functions/over_window.h"
#include "functions/series.h"
#include "functions/window_extremes.h"
#include "functions/word_steps.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// Where the extreme of a window is; zeros for a window of no bars.
struct Found {
  int64_t bars_ago = 0;
  double value = 0.0;
};

template <Extreme extreme>
struct ExtremeMemory final : CallMemory {
  ExtremeRows<extreme> rows;
  ExtremeRows<extreme> of_block;  ///< begun anew by each

 private:
  void drop_from(int32_t row) override { rows.cut(row); }
};

template <Extreme extreme>
Found search(const Call& call, int32_t column, int32_t n) {
  const Window window = call.table().window(column, call.row, n);
  if (window.empty()) return {};
  call.calculator.note_work(window.size());
  const size_t place = place_of_extreme<extreme>(window, window.size());
  return {static_cast<int64_t>(window.size() - 1 - place), window[place]};
}

/// The row of the extreme, -1 if the call doesn't know the rows of the window.
template <Extreme extreme>
int32_t remembered_row(const Call& call, int32_t column, int32_t n) {
  const DataTable& table = call.table();
  const Remembering remembering = call.variable.remembering;
  const bool inside = column != -1 && call.row >= 0 && call.row < table.row_count();
  if (n < 1 || !inside || remembering < Remembering::in_order) return -1;
  const int32_t first = std::max(call.row - n + 1, 0);
  return memory_of<ExtremeMemory<extreme>>(call.script(), call.variable)
      .rows.find(table, column, first, call.row, remembering == Remembering::catching_up);
}

/// Evaluates X at the call's row, stores it where it has no column, and searches its last n values.
template <Extreme extreme>
Status find_extreme(const Call& call, int32_t n, Found& found) {
  double x = null_value;
  if (const Status status = call.evaluate(0, x); failed(status)) return status;
  Variable& argument = call.argument(0);
  const SeriesStore store(call, held_column(argument, 0));
  const int32_t column = store_in_aux_of_argument(call, argument, x);
  if (!argument.has_column()) store.note(x);
  const int32_t row = remembered_row<extreme>(call, column, n);
  found = row < 0 ? search<extreme>(call, column, n)
                  : Found{call.row - row, call.table().cell(row, column)};
  return Status::ok;
}

/// A window of no bars answers with 0, a negative one with null.
template <Extreme extreme>
Status extreme_at(const Call& call) {
  double period = null_value;
  if (const Status status = call.evaluate(1, period); failed(status)) return status;
  const int32_t n = to_int(period);
  if (n < 0) return call.answer(null_value);
  Found found;
  if (const Status status = find_extreme<extreme>(call, n, found); failed(status)) return status;
  return call.answer(found.value);
}

/// Tells a memory that rests on an unbroken order of a block's rows.
template <Extreme extreme>
void pass_rows(const ColumnCall& call) {
  if (call.variable.remembering != Remembering::in_order) return;
  auto& memory = memory_of<ExtremeMemory<extreme>>(call.columns.pool().script, call.variable);
  call.columns.note_memory(memory, call.rows, memory.rows.passed());
  memory.rows.pass(call.rows.first, call.rows.end);
}

/// The extremes of the windows of n bars that end at the rows of the call, as far as the table has
/// them; null for full windows that are long beside the block.
template <Extreme extreme>
const double* extremes_over(const ColumnCall& call) {
  constexpr size_t longest = 4;
  const std::optional<double> period = call.number(1);
  const int32_t n = period ? to_int(*period) : 0;
  if (n < 1) return nullptr;
  const int32_t full = std::clamp(n - 1, call.rows.first, call.rows.end);
  const auto full_windows = static_cast<size_t>(call.rows.end - full);
  const auto count = static_cast<size_t>(n);
  if (full_windows > 0 && count / longest > call.size()) return nullptr;
  const double* series = series_over(call, 0, SeriesPlace::column_of_argument);
  if (series == nullptr) return nullptr;
  pass_rows<extreme>(call);
  double* results = call.scratch();
  if (full > call.rows.first) growing_extremes<extreme>(series, call.rows.first, full, results);
  if (full_windows == 0) return results;
  window_extremes<extreme>(series + full - (n - 1), count, full_windows,
                           results + (full - call.rows.first),
                           call.columns.scratch(full_windows + count - 1));
  return results;
}

constexpr ColumnTraits extreme_traits = {.series = SeriesPlace::column_of_argument};

template <Extreme extreme>
class WindowExtreme : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  const double* column(const ColumnCall& call) const final { return extremes_over<extreme>(call); }
  ColumnTraits column_traits() const final { return extreme_traits; }
  Status execute(const Call& call) const final {
    return call.scan ? scan_period(call, 2, 1) : extreme_at<extreme>(call);
  }
};

template <Extreme extreme>
class BarsSinceExtreme : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const final {
    if (call.scan) return scan_period(call, 2, 1);
    double period = null_value;
    Status status = call.evaluate(1, period);
    if (failed(status)) return status;
    Found found;
    status = find_extreme<extreme>(call, to_int(period), found);
    return failed(status) ? status : call.answer(static_cast<double>(found.bars_ago));
  }
  const double* column(const ColumnCall& call) const final {
    const std::optional<double> period = call.number(1);
    const int32_t n = period ? to_int(*period) : 0;
    const int32_t series = n < 1 ? -1 : series_column_over(call, 0, extreme_traits.series);
    if (series == -1) return nullptr;
    pass_rows<extreme>(call);
    auto& rows =
        memory_of<ExtremeMemory<extreme>>(call.columns.pool().script, call.variable).of_block;
    rows.forget_window();
    double* results = call.scratch();
    for (int32_t row = call.rows.first; row < call.rows.end; ++row) {
      const int32_t first = std::max(row - n + 1, 0);
      results[row - call.rows.first] = row - rows.find(call.table(), series, first, row, true);
    }
    return results;
  }
  ColumnTraits column_traits() const final { return extreme_traits; }
};

/// The extreme of the bars before this one, with the period of the bar before.
template <Extreme extreme>
class EarlierExtreme : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  const double* column(const ColumnCall& call) const final {
    return extremes_over<extreme>(call.over(call.rows.shifted(-1)));
  }
  ColumnTraits column_traits() const final {
    ColumnTraits traits = extreme_traits;
    traits.revisits = true;
    return traits;
  }
  Status execute(const Call& call) const final {
    if (call.scan) return call.check_count(2);
    double period = null_value;
    if (const Status status = call.evaluate(1, period); failed(status)) return status;
    if (call.row < 1 || is_null(period)) return call.answer(null_value);
    return extreme_at<extreme>(
        {call.pool, call.calculator, call.variable, call.row - 1, false, call.error, call.result});
  }
};

using HHV = WindowExtreme<Extreme::greatest>;
using LLV = WindowExtreme<Extreme::smallest>;
using HHVBARS = BarsSinceExtreme<Extreme::greatest>;
using LLVBARS = BarsSinceExtreme<Extreme::smallest>;
using HV = EarlierExtreme<Extreme::greatest>;
using LV = EarlierExtreme<Extreme::smallest>;

constexpr WordRow extreme_rows[] = {
    word_row<HHV>("HHV", 51, steady | opens_line | period_at(1)),
    word_row<LLV>("LLV", 54, steady | opens_line | period_at(1)),
    word_row<HHVBARS>("HHVBARS", 14, steady | periods_from(1, can_fail)),
    word_row<LLVBARS>("LLVBARS", 16, steady | periods_from(1, can_fail)),
    word_row<HV>("HV", 180, steady | period_at(1)),
    word_row<LV>("LV", 181, steady | period_at(1)),
};

}  // namespace

std::span<const WordRow> extreme_words() { return extreme_rows; }

}  // namespace quor
