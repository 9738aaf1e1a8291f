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

void Variable::set_elements(std::vector<MathElement> list) {
  elements = std::move(list);
  program = lower(elements);
}

}  // namespace quor
