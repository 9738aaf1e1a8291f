#include "core/compiled_script.h"

#include "text/numbers.h"

namespace quor {

Variable& CompiledScript::take(std::unique_ptr<Variable> variable) {
  return *variables_.emplace_back(std::move(variable));
}

void CompiledScript::list(Variable& variable) {
  compiled_index_.add(variable);
  if (variable.kind == VariableKind::field) field_index_.add(variable);
  variable.place = variable_list.size();
  variable_list.push_back(&variable);
  if (variable.column_id != no_column) note_column(variable);
}

void CompiledScript::list_reserved(Variable& variable) {
  variable.name = next_hidden_name();
  reserved_index_.add(variable);
  reserved_list.push_back(&variable);
}

void CompiledScript::note_column(Variable& variable) {
  if (variable.place == unlisted) return;
  column_index_.insert_by_place(variable);
  insert_by_place(by_column_[variable.column_id], variable);
}

const std::vector<Variable*>& CompiledScript::variables_of_column(uint32_t column_id) const {
  static const std::vector<Variable*> none;
  const auto found = by_column_.find(column_id);
  return found != by_column_.end() ? found->second : none;
}

Variable* CompiledScript::find_with_column(std::string_view text) const {
  const auto has_column = [text](const Variable& variable) {
    return variable.text == text && variable.column_id != no_column;
  };
  Variable* reserved = reserved_index_.find(text, has_column);
  return reserved != nullptr ? reserved : column_index_.find(text, has_column);
}

Variable* CompiledScript::find_field(std::string_view text) const {
  Variable* reserved = find_reserved(text);
  if (reserved != nullptr) return reserved;
  return field_index_.find(text, [text](const Variable& field) { return field.text == text; });
}

Variable* CompiledScript::find_reserved(std::string_view text) const {
  return reserved_index_.find(text, [text](const Variable& field) { return field.text == text; });
}

std::string CompiledScript::next_hidden_name() const {
  std::string name = "~";
  append_integer(name, static_cast<int64_t>(hidden_name_count()));
  return name;
}

std::string CompiledScript::auto_line_name() {
  return "EMPTY_LINE_NAME_RESERVED" + std::to_string(++empty_line_counter);
}

void CompiledScript::forget_rows(int32_t first) {
  for (const Variable* call : remembering_calls) {
    for (CallMemory* memory : {call->memory.get(), call->known_values.get()}) {
      if (memory != nullptr) memory->cut(call->for_one_run ? 0 : first);
    }
  }
}

}  // namespace quor
