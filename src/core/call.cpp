#include "core/call.h"

#include <algorithm>

#include "core/known_values.h"
#include "text/numbers.h"

namespace quor {

std::string Call::argument_text(size_t position) const {
  const std::string& text = argument(position).text;
  if (argument(position).is_text())
    return text.size() < 2 ? std::string() : text.substr(1, text.size() - 2);
  if (text == "CIRCLEDOT") return "\u25CF";
  if (text == "POINTDOT") return "\u00B7";
  if (text == "CROSSDOT") return "O";
  double value = null_value;
  ignore_status(evaluate(position, value));
  return fixed_text(value);
}

KnownValues& Call::known_values() const {
  if (variable.known_values == nullptr) {
    script().remembering_calls.push_back(&variable);
    variable.known_values = std::make_unique<KnownValues>();
  }
  return static_cast<KnownValues&>(*variable.known_values);
}

Status Call::recall(size_t position, int32_t at_row, double& value) const {
  value = null_value;
  calculator.note_work();
  const Remembering remembering = variable.remembering;
  // A call that knows its states comes to most rows once.
  const bool may_know = remembering != Remembering::nothing &&
                        (remembering != Remembering::catching_up || variable.memory == nullptr);
  const bool is_earlier = at_row >= 0 && at_row < row && row < table().row_count();
  const bool is_field = argument(position).kind == VariableKind::field;
  if (!may_know || !is_earlier || is_field || position >= KnownValues::most_arguments) {
    return evaluate_at(position, at_row, value);
  }
  const RowChanges& changes = table().watch_changes();
  KnownValues& values = known_values();
  if (const double* known = values.find(position, at_row, changes)) {
    value = *known;
    return Status::ok;
  }
  const uint64_t before = changes.now();
  const Status status = evaluate_at(position, at_row, value);
  if (!failed(status) && changes.first_since(before) > at_row) {
    values.learn(position, at_row, value);
  }
  return status;
}

int32_t Call::recalled_end(int32_t from, size_t first_argument, size_t count) const {
  int32_t end = row;
  for (size_t position = first_argument; position < first_argument + count; ++position) {
    // A field is read, and so never learned.
    if (argument(position).kind == VariableKind::field) continue;
    if (variable.known_values == nullptr) return from;
    end = known_values().known_end(position, from, end, table().watch_changes());
  }
  return end;
}

Status Call::fail(Status status, std::string_view suffix) const {
  append_error(error, variable.function_word + std::string(suffix), variable.line);
  return status;
}

Status Call::wrong_count() const { return fail(Status::argument_count); }

Status Call::check_count(size_t least, size_t most) const {
  return argument_count() >= least && argument_count() <= most ? Status::ok : wrong_count();
}

}  // namespace quor
