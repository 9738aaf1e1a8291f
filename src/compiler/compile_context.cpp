#include "compiler/compile_context.h"

#include "compiler/expressions.h"
#include "tables/field_table.h"

namespace quor {

void CompileContext::reset() {
  std::erase_if(declared_names, [](const auto& entry) { return !reserved_field_id(entry.first); });
  pool.reset();
}

void CompileContext::add_reserved_variable(std::string_view word, uint32_t column_id,
                                           bool add_column) {
  // A word that is there already brings its own column in. What it names may be gone with the next
  // compile, so the elements aren't kept.
  std::vector<MathElement> elements;
  bool whole_series = false;
  std::string unread;
  ignore_status(build_elements(
      *this, {.text = word, .caller_kind = VariableKind::field, .allow_unknown = true},
      whole_series, elements, unread));
  Variable& variable = pool.declare_field(word, column_id);
  variable.whole_series = whole_series;
  enter(variable, add_column);
}

void CompileContext::add_reference(std::string_view word, uint32_t column_id) {
  enter(pool.make_reference(word, column_id), true);
}

void CompileContext::enter(Variable& variable, bool add_column) {
  if (add_column) variable.column_index = pool.table().add_column(variable.column_id);
  declared_names.try_emplace(variable.text, variable.column_id);
}

}  // namespace quor
