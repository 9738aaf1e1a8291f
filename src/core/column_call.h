// A call over a block of rows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "core/columns.h"
#include "core/data_pool_center.h"
#include "core/model.h"
#include "core/value.h"

namespace quor {

/// What `column` receives: a call, the rows, and what a bar leaves at which the word writes
/// nothing.
struct ColumnCall {
  Columns& columns;
  Variable& variable;
  const Block rows;
  const double start;

  DataTable& table() const { return columns.pool().table(); }
  size_t size() const { return rows.size(); }
  size_t argument_count() const { return variable.arguments.size(); }
  /// The argument at a position, null for one that isn't there.
  Variable* argument(size_t position) const {
    return position < argument_count() ? variable.arguments[position] : nullptr;
  }

  /// The values of an argument, at the rows of the call or at others.
  const double* values(size_t position) const { return values(position, rows); }
  const double* values(size_t position, Block at) const {
    Variable* const found = argument(position);
    return found == nullptr ? nullptr : columns.values(*found, at, null_value);
  }
  /// The number that an argument is at every bar.
  std::optional<double> number(size_t position) const {
    const Variable* const found = argument(position);
    if (found == nullptr || found->kind != VariableKind::number) return std::nullopt;
    return found->value;
  }

  const double* everywhere(double value) const { return columns.everywhere(value, size()); }
  double* scratch() const { return columns.scratch(size()); }
  /// The cells of a column at the rows of the call, all of which the caller writes.
  double* overwrite(int32_t column) const { return columns.overwrite(column, rows); }
  /// The values of an argument, which come to stand in a column, too.
  const double* stored(size_t position, int32_t column) const {
    const double* const found = values(position);
    if (found == nullptr || found == cells(column) + rows.first) return found;
    std::copy_n(found, size(), overwrite(column));
    return found;
  }
  /// All cells of a column, from row 0 on.
  const double* cells(int32_t column) const { return table().cells(column).data(); }
};

}  // namespace quor
