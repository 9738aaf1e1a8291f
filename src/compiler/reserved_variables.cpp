#include "compiler/reserved_variables.h"

#include "compiler/expressions.h"

namespace quor {
namespace {

/// A word that is there already brings its own column in. What it names may be gone with the next
/// compile, so the elements aren't kept. Gives whether the word asks for a whole series.
bool bring_in(CompileContext& context, std::string_view word) {
  std::vector<MathElement> elements;
  bool whole_series = false;
  std::string unread;
  ignore_status(build_elements(
      context, {.text = word, .caller_kind = VariableKind::field, .allow_unknown = true},
      whole_series, elements, unread));
  return whole_series;
}

void enter(CompileContext& context, Variable& variable, bool add_column) {
  if (add_column && context.pool.table().column_index_of(variable.column_id) == -1) {
    variable.column_index = context.pool.table().add_column(variable.column_id);
  }
  context.declared_names.try_emplace(variable.text, variable.column_id);
}

}  // namespace

void add_reserved_variable(CompileContext& context, std::string_view word, uint32_t column_id,
                           bool add_column) {
  const bool whole_series = bring_in(context, word);
  Variable& variable = context.pool.declare_field(word, column_id);
  variable.whole_series = whole_series;
  enter(context, variable, add_column);
}

void add_reference(CompileContext& context, std::string_view word, uint32_t column_id) {
  const bool whole_series = bring_in(context, word);
  Variable& variable = context.pool.make_reference(word, column_id);
  variable.whole_series = whole_series;
  enter(context, variable, true);
}

}  // namespace quor
