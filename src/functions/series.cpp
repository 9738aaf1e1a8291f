#include "functions/series.h"

namespace quor {
namespace {

int32_t store_in_aux(const Call& call, const Variable& argument, Variable& holder, double value) {
  if (argument.has_column()) return argument.column_index;
  if (holder.aux_column_ids.empty()) holder.reserve_aux_columns(1);
  call.table().set_cell(call.row, holder.aux_column_indexes[0], value);
  return holder.aux_column_indexes[0];
}

}  // namespace

void give_result_column(const Call& call) {
  call.variable.reserve_aux_columns(1);
  call.variable.take_aux_column(call.variable, 0);
}

void give_own_column(const Call& call, Variable& argument) {
  // One variable stands for all arguments that aren't there, so it takes no column.
  if (argument.kind == VariableKind::missing) return;
  call.variable.reserve_aux_columns(1);
  argument.take_aux_column(call.variable, 0);
}

int32_t store_in_aux_of_argument(const Call& call, Variable& argument, double value) {
  return store_in_aux(call, argument, argument, value);
}

int32_t store_in_aux_of_call(const Call& call, Variable& argument, double value) {
  return store_in_aux(call, argument, call.variable, value);
}

}  // namespace quor
