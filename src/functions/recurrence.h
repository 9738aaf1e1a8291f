// The shape of a word whose value at a bar comes from the value of the bar before.
#pragma once

#include <optional>

#include "core/columns.h"
#include "functions/averaging.h"
#include "functions/word_steps.h"

namespace quor {

/// A word of X and parameters. `Step` says what is its own:
///
///     static Status scan(const Call& call);
///     static constexpr size_t parameters;   // the arguments behind X
///     static constexpr bool ignores_status; // of its arguments
///     bool take(size_t position, double value, const DataTable& table);
///                                           // a parameter, in order; false: the bar is null
///     double first(double x) const;         // the value at row 0
///     double next(double x, double prev) const;
///
/// The value is kept in the call's result column. A bar that a parameter makes null writes nothing.
template <typename Step>
class Recurrence : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const final {
    if (call.scan) return Step::scan(call);
    Step step;
    for (size_t position = 1; position <= Step::parameters; ++position) {
      double value = null_value;
      const Status status = call.evaluate(position, value);
      if (failed(status) && !Step::ignores_status) return status;
      if (!step.take(position, value, call.table())) return call.answer(null_value);
    }
    double x = null_value;
    const Status status = call.evaluate(0, x);
    if (failed(status) && !Step::ignores_status) return status;
    const int32_t column = result_column(call);
    const double before = call.table().cell(int64_t{call.row} - 1, column);
    return call.answer(stored(call, column, call.row == 0 ? step.first(x) : step.next(x, before)));
  }

  const double* column(const ColumnCall& call) const final {
    Step step;
    for (size_t position = 1; position <= Step::parameters; ++position) {
      const std::optional<double> value = call.number(position);
      if (!value) return nullptr;
      if (!step.take(position, *value, call.table())) return call.everywhere(null_value);
    }
    if (!call.variable.has_column() || call.rows.first == 0) return nullptr;
    const double* x = call.values(0);
    if (x == nullptr) return nullptr;
    double* y = call.overwrite(call.variable.column_index);
    double value = y[-1];
    const size_t size = call.size();
    for (size_t i = 0; i < size; ++i) y[i] = value = step.next(x[i], value);
    return y;
  }

  ColumnTraits column_traits() const final { return {.by_columns = true}; }
};

}  // namespace quor
