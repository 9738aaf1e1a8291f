#include "core/model.h"

#include "core/data_pool_center.h"

namespace quor {

void Variable::reserve_aux_columns(int count) {
  std::vector<uint32_t> ids;
  std::vector<int32_t> indexes;
  DataTable& table = pool->table();
  for (int i = 0; i < count; ++i) {
    const uint32_t id = table.take_auxiliary_id();
    ids.push_back(id);
    indexes.push_back(table.add_column(id));
  }
  aux_column_ids.swap(ids);
  aux_column_indexes.swap(indexes);
}

void Variable::take_aux_column(const Variable& holder, size_t position) {
  column_id = holder.aux_column_ids[position];
  column_index = holder.aux_column_indexes[position];
  pool->script.note_column(*this);
}

void Variable::set_elements(std::vector<MathElement> list) {
  elements = std::move(list);
  program = lower(elements);
}

}  // namespace quor
