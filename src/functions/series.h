// Where a window word finds the past values of its argument.
#pragma once

#include "core/base_func.h"
#include "core/call.h"
#include "core/data_table.h"
#include "core/model.h"

namespace quor {

void give_result_column(const Call& call);
/// Gives the call a column of its own unless it has one: its only auxiliary column.
inline void ensure_result_column(const Call& call) {
  if (!call.variable.has_column()) give_result_column(call);
}

/// The column in which the call's results stand; reserved at first use for a word whose calls get
/// none from the compiler.
inline int32_t result_column(const Call& call) {
  ensure_result_column(call);
  return call.variable.column_index;
}

/// Hands a column that the call reserves to an argument without one.
void give_own_column(const Call& call, Variable& argument);

/// Stores the argument's value of this bar in the argument's own column: the one that it has, or
/// one that the call reserves and hands over, so that later bars find it. Gives the column's index.
inline int32_t store_in_own_column(const Call& call, Variable& argument, double value) {
  if (!argument.has_column()) give_own_column(call, argument);
  call.table().set_cell(call.row, argument.column_index, value);
  return argument.column_index;
}

/// The argument's own column, where nothing is stored, if it has one; else an auxiliary column of
/// the argument, where its value of this bar is stored and which doesn't become its own.
int32_t store_in_aux_of_argument(const Call& call, Variable& argument, double value);

/// As `store_in_aux_of_argument`, with the auxiliary column on the call.
int32_t store_in_aux_of_call(const Call& call, Variable& argument, double value);

}  // namespace quor
