#include "compiler/compile_context.h"

#include "tables/field_table.h"

namespace quor {

void CompileContext::reset() {
  std::erase_if(declared_names, [](const auto& entry) { return !reserved_field_id(entry.first); });
  pool.reset();
}

}  // namespace quor
