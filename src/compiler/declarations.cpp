#include "compiler/declarations.h"

#include "compiler/expressions.h"

namespace quor {
namespace {

/// A word that is there already brings its own column in. What it names may be gone with the next
/// compile, so the elements aren't kept. Gives whether the word asks for a whole series.
bool bring_in(CompileContext& context, std::string_view word) {
  std::vector<MathElement> elements;
  bool whole_series = false;
  std::string unread;
  const ElementRequest request{
      .text = word, .caller_kind = VariableKind::field, .allow_unknown = true};
  ignore_status(build_elements(context, request, whole_series, elements, unread));
  return whole_series;
}

void enter(CompileContext& context, Variable& variable, bool whole_series, bool add_column) {
  variable.whole_series = whole_series;
  if (add_column) variable.column_index = context.pool.table().add_column(variable.column_id);
  context.declared_names.try_emplace(variable.text, variable.column_id);
}

}  // namespace

void add_reserved_variable(CompileContext& context, std::string_view word, uint32_t column_id,
                           bool add_column) {
  const bool whole_series = bring_in(context, word);
  enter(context, context.pool.declare_field(word, column_id), whole_series, add_column);
}

void add_reference(CompileContext& context, std::string_view word, uint32_t column_id) {
  const bool whole_series = bring_in(context, word);
  enter(context, context.pool.make_reference(word, column_id), whole_series, true);
}

}  // namespace quor
