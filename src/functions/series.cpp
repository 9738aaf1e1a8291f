#include "functions/series.h"

#include "core/call.h"
#include "core/column_owners.h"

namespace quor {
namespace {

int32_t store_in_aux(const Call& call, const Variable& argument, Variable& holder, double value) {
  if (argument.has_column()) return argument.column_index;
  if (holder.aux_column_ids.empty()) reserve_columns(holder, 1);
  call.table().set_cell(call.row, holder.aux_column_indexes[0], value);
  return holder.aux_column_indexes[0];
}

}  // namespace

void give_result_column(const Call& call) {
  reserve_columns(call.variable, 1);
  hand_over_column(call.variable, 0, call.variable);
}

void give_own_column(const Call& call, Variable& argument) {
  // One variable stands for all arguments that aren't there, so it takes no column.
  if (argument.kind == VariableKind::missing) return;
  reserve_columns(call.variable, 1);
  hand_over_column(call.variable, 0, argument);
}

int32_t store_in_aux_of_argument(const Call& call, Variable& argument, double value) {
  return store_in_aux(call, argument, argument, value);
}

int32_t store_in_aux_of_call(const Call& call, Variable& argument, double value) {
  return store_in_aux(call, argument, call.variable, value);
}

}  // namespace quor
