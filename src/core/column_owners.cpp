#include "core/column_owners.h"

#include <cassert>

#include "core/data_pool_center.h"

namespace quor {

void reserve_columns(Variable& holder, size_t count) {
  assert(count <= most_columns);
  std::vector<uint32_t> ids;
  std::vector<int32_t> indexes;
  DataTable& table = holder.pool->table();
  for (size_t i = 0; i < count; ++i) {
    const uint32_t id = table.take_auxiliary_id();
    ids.push_back(id);
    indexes.push_back(table.add_column(id));
  }
  holder.aux_column_ids.swap(ids);
  holder.aux_column_indexes.swap(indexes);
}

void hand_over_column(const Variable& holder, size_t position, Variable& owner) {
  if (position >= holder.aux_column_ids.size()) return;
  owner.column_id = holder.aux_column_ids[position];
  owner.column_index = holder.aux_column_indexes[position];
  owner.pool->script.note_column(owner);
}

}  // namespace quor
