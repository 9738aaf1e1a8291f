#include "core/model.h"

#include "core/data_pool_center.h"

namespace quor {

void Variable::reserve_aux_columns(int count) {
  aux_column_ids.clear();
  aux_column_indexes.clear();
  DataTable& table = pool->table();
  for (int i = 0; i < count; ++i) {
    const uint32_t id = table.take_auxiliary_id();
    aux_column_ids.push_back(id);
    aux_column_indexes.push_back(table.add_column(id));
  }
}

void Variable::set_elements(std::vector<MathElement> list) {
  elements = std::move(list);
  program = lower(elements);
}

}  // namespace quor
