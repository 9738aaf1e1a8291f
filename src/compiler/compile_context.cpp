#include "compiler/compile_context.h"

#include "tables/field_table.h"

namespace quor {

void CompileContext::reset() {
  std::erase_if(declared_names, [](const auto& entry) { return !reserved_field_id(entry.first); });
  pool.reset();
}

void CompileContext::add_reserved_variable(std::string_view word, uint32_t column_id,
                                           bool add_column) {
  enter(pool.declare_field(word, column_id), add_column);
}

void CompileContext::add_reference(std::string_view word, uint32_t column_id) {
  enter(pool.make_reference(word, column_id), true);
}

void CompileContext::enter(Variable& variable, bool add_column) {
  if (add_column) variable.column_index = pool.table().add_column(variable.column_id);
  declared_names.try_emplace(variable.text, variable.column_id);
}

}  // namespace quor
