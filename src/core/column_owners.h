// Who holds which column beyond those that the compiler gives out. A column is reserved by the
// variable that holds it; it may be handed over to another one, which then owns it as its series,
// while the holder still counts it among its own; and it is found by its place with the holder.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/model.h"

namespace quor {

/// The most auxiliary columns that one variable reserves.
inline constexpr size_t most_columns = 16;

/// Replaces the auxiliary columns of a variable by `count` new ones, all cells null. Without memory
/// for all of them those before stay.
void reserve_columns(Variable& holder, size_t count);

/// Makes an auxiliary column of `holder` the own column of `owner`, which may be the holder itself.
/// A place without a column changes nothing.
void hand_over_column(const Variable& holder, size_t position, Variable& owner);

/// The index of an auxiliary column in the table; -1 for one that was never reserved.
inline int32_t held_column(const Variable& holder, size_t position) {
  return position < holder.aux_column_indexes.size() ? holder.aux_column_indexes[position] : -1;
}

}  // namespace quor
