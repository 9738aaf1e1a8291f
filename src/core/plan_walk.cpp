#include "core/plan_walk.h"

#include <algorithm>
#include <span>

#include "core/base_func.h"

namespace quor {
namespace {

Reach either(Reach a, Reach b) {
  return {
      a.passed_over || b.passed_over, a.by_period || b.by_period, a.elsewhere || b.elsewhere,
      a.revisited || b.revisited,     a.ahead || b.ahead,         a.starts_late || b.starts_late};
}

/// How a statement comes to an argument of a call that it comes to so.
Reach reach_of_argument(const Variable& call, size_t position, Reach reach) {
  const ColumnTraits traits = call.function->column_traits();
  reach.passed_over |= traits.passes_over && position >= traits.passed_over_from;
  reach.by_period |= (traits.leaves_state || traits.revisits) && !has_fixed_periods(call);
  // What starts late and then looks back, as in REF(STD(C-O,20),5), comes to rows for the first
  // time behind later ones.
  reach.passed_over |= traits.revisits && reach.starts_late;
  reach.elsewhere |= traits.revisits;
  reach.revisited |= revisits_rows(call);
  reach.ahead |= traits_of(call).has(reads_forward);
  reach.starts_late |= traits.starts_late;
  return reach;
}

bool is_served(const Variable& variable) {
  return variable.kind == VariableKind::call && variable.function != nullptr;
}

bool gives_a_value(const Program& program) {
  return program.ending == Ending::value &&
         std::ranges::none_of(program.steps,
                              [](const Step& step) { return step.kind == Step::Kind::discard; });
}

}  // namespace

bool has_fixed_periods(const Variable& call) {
  const std::span arguments(call.arguments);
  const size_t series = std::min(call.function->column_traits().series_count, arguments.size());
  return std::ranges::all_of(arguments.subspan(series), [](const Variable* period) {
    return period != nullptr && period->kind == VariableKind::number;
  });
}

bool revisits_rows(const Variable& call) {
  const ColumnTraits traits = call.function->column_traits();
  return traits.revisits && !(traits.displaces && has_fixed_periods(call));
}

PlanWalk::PlanWalk(const CompiledScript& script)
    : script_(script), statements_(script.statement_list.size()) {
  const auto& statements = script_.statement_list;
  for (size_t i = 0; i < statements.size(); ++i) {
    each_in_full_ |= statements[i]->whole_series;
    // A line that only names another one writes what stands there.
    if (names_own_column(*statements[i])) continue;
    note_writer(statements[i]->column_id, static_cast<int64_t>(i), statements[i]->whole_series);
  }
  for (size_t i = 0; i < statements.size(); ++i) {
    walk_statement(*statements[i], static_cast<int64_t>(i));
  }
}

Uses PlanWalk::uses_of(const Variable& variable) const {
  const auto uses = uses_.find(&variable);
  return uses == uses_.end() ? Uses() : uses->second;
}

const Writer* PlanWalk::writer_of(uint32_t column_id) const {
  const auto writer = writers_.find(column_id);
  return writer == writers_.end() ? nullptr : &writer->second;
}

void PlanWalk::walk_statement(const Variable& statement, int64_t position) {
  position_ = position;
  in_full_ = statement.whole_series;
  if (statement.kind == VariableKind::expression) {
    statements_[static_cast<size_t>(position)].has_columns &= gives_a_value(statement.program);
  } else if (statement.kind != VariableKind::number) {
    statements_[static_cast<size_t>(position)].has_columns = false;
  }
  walk_elements(statement, {}, 0);
}

void PlanWalk::walk_elements(const Variable& variable, Reach reach, int level) {
  for (const MathElement& element : variable.elements) {
    if (element.variable != nullptr) walk(*element.variable, reach, level + 1);
  }
}

void PlanWalk::walk(Variable& variable, Reach reach, int level) {
  StatementParts& parts = statements_[static_cast<size_t>(position_)];
  if (level > most_column_levels) parts.has_columns = false;
  const bool is_new = !uses_.contains(&variable);
  if (level > max_nesting || !note_use(variable, reach, level)) return;
  if (is_new && is_served(variable)) calls_.push_back(&variable);
  note_part(variable);
  if (variable.kind == VariableKind::expression) {
    walk_elements(variable, reach, level);
  } else if (is_served(variable)) {
    walk_call(variable, reach, level);
  }
}

/// A variable that is come to again is shared, and so are its parts. False if nothing is new.
bool PlanWalk::note_use(const Variable& variable, Reach reach, int level) {
  const auto [entry, first] = uses_.try_emplace(&variable);
  Uses& uses = entry->second;
  const Uses before = uses;
  if (first) uses.first_statement = position_;
  uses.shared |= !first;
  uses.in_full |= in_full_;
  uses.reach = either(uses.reach, reach);
  if (uses.statement != position_) {
    uses.statement = position_;
    uses.reach_of_statement = {};
    uses.level = 0;
  }
  uses.reach_of_statement = either(uses.reach_of_statement, reach);
  uses.level = std::max(uses.level, level);
  return uses != before;
}

void PlanWalk::note_part(const Variable& variable) {
  StatementParts& parts = statements_[static_cast<size_t>(position_)];
  switch (variable.kind) {
    case VariableKind::number:
      return;
    case VariableKind::field:
      parts.has_columns &= variable.column_index != -1;
      parts.reads.push_back(&variable);
      return;
    case VariableKind::expression:
      if (variable.is_text()) return;
      parts.has_columns &=
          variable.elements.empty() ? variable.is_draw_null() : gives_a_value(variable.program);
      return;
    case VariableKind::call:
      parts.has_columns &= variable.function != nullptr;
      return;
    default:
      parts.has_columns = false;
  }
}

void PlanWalk::walk_call(Variable& call, Reach reach, int level) {
  StatementParts& parts = statements_[static_cast<size_t>(position_)];
  note_call(call, reach);
  for (size_t i = 0; i < call.arguments.size(); ++i) {
    if (!call.function->reads_argument(i)) continue;
    Variable* argument = call.arguments[i];
    if (argument == nullptr) {
      parts.has_columns = false;
      continue;
    }
    walk(*argument, reach_of_argument(call, i, reach), level + 1);
    note_series(call, i);
  }
}

void PlanWalk::note_call(const Variable& call, Reach reach) {
  StatementParts& parts = statements_[static_cast<size_t>(position_)];
  const Traits traits = traits_of(call);
  const bool has_state = leaves_state(call);
  if (!call.function->by_columns() || (has_state && reach.passed_over)) parts.has_columns = false;
  parts.looks_back &= traits.has(looks_back);
  parts.is_repeatable &=
      traits.has(steady) && !traits.has_any(of_its_own) && call.function->required_fields().empty();
  parts.sees_later_rows |= traits.has(reads_forward) || !traits.has_any(looks_back | follows_rows);
  parts.revisits_state |= has_state && reach.elsewhere;
  anything_fails_ |= traits.has(can_fail);
  if (traits.has(sets_arguments)) note_set_targets(call, reach);
}

/// Where a call that has evaluated an argument keeps its series.
void PlanWalk::note_series(const Variable& call, size_t position) {
  StatementParts& parts = statements_[static_cast<size_t>(position_)];
  const Variable& argument = *call.arguments[position];
  const ColumnTraits traits = call.function->column_traits();
  const bool is_series = position < traits.series_count && traits.series != SeriesPlace::nowhere;
  // A statement of the same text has the series in its column.
  if (is_series && argument.has_column()) parts.reads.push_back(&argument);
  parts.arguments.push_back(&argument);
  if (argument.kind != VariableKind::expression) return;
  Uses& uses = uses_[&argument];
  const bool by_columns = call.function->by_columns();
  const bool takes_own = is_series && traits.series == SeriesPlace::own_column;
  uses.has_own_column |= !by_columns || takes_own;
  uses.has_other_place |= !by_columns || (is_series && !takes_own);
}

/// A field is written at the row that the call is evaluated at.
void PlanWalk::note_set_targets(const Variable& call, Reach reach) {
  const int64_t statement = reach.elsewhere ? INT64_MAX : position_;
  for (size_t i = 0; i < call.arguments.size(); i += 2) {
    const Variable* target = call.arguments[i];
    if (target == nullptr) continue;
    if (target->kind == VariableKind::field) {
      note_writer(target->column_id, statement, in_full_);
    } else {
      set_numbers_.insert(target);
    }
  }
}

void PlanWalk::note_writer(uint32_t column_id, int64_t statement, bool is_in_full) {
  if (column_id == no_column) return;
  const auto [entry, first] = writers_.try_emplace(column_id);
  Writer& writer = entry->second;
  writer.statement = std::max(writer.statement, statement);
  writer.in_full |= is_in_full;
  writer.is_alone &= first;
}

}  // namespace quor
