#include "core/plan.h"

#include <algorithm>
#include <bit>
#include <map>

#include "core/base_func.h"
#include "core/column_owners.h"
#include "core/data_table.h"
#include "core/plan_memories.h"
#include "core/plan_walk.h"

namespace quor {
namespace {

/// Whether a field that the script reads may be a column that one of its variables writes.
bool shares_columns(const CompiledScript& script, const DataTable& table) {
  const uint64_t end = table.next_auxiliary_id() + most_columns * script.variable_count();
  return std::ranges::any_of(script.extra_field_set, [end](int32_t id) {
    const auto column = static_cast<uint32_t>(id);
    return column >= DataTable::first_auxiliary_id && column < end;
  });
}

/// Whether one call hands the argument a column that another one would not have given it.
bool is_in_conflict(const Uses& argument) {
  return argument.has_own_column && argument.has_other_place;
}

bool is_number(const Variable* argument) {
  return argument != nullptr && argument->kind == VariableKind::number;
}

/// Whether the host gives the values of an argument, or the script as a number.
bool is_given(const Variable* argument, const PlanWalk& walk) {
  return is_number(argument) ||
         (argument != nullptr && argument->kind == VariableKind::field && argument->has_column() &&
          walk.writer_of(argument->column_id) == nullptr);
}

/// Whether a call of some words over a field that the host gives, and else numbers.
bool can_go_early(const Variable& call, const PlanWalk& walk) {
  if (call.kind != VariableKind::call || call.function == nullptr || call.arguments.empty()) {
    return false;
  }
  const Variable* first = call.arguments.front();
  return call.function->column_traits().side_by_side && is_given(first, walk) &&
         !is_number(first) &&
         std::all_of(call.arguments.begin() + 1, call.arguments.end(), is_number);
}

/// Whether a call leaves nothing and says the same as any other of its word over the same numbers
/// and fields.
bool can_have_twins(const Variable& call, const PlanWalk& walk) {
  constexpr Traits of_its_own = reads_forward | follows_settings | acts | draws | hides_state |
                                reads_statement | sets_arguments;
  const Traits traits = traits_of(call);
  return traits.has(steady) && !traits.has_any(of_its_own) && call.function->by_columns() &&
         !call.function->column_traits().keeps_start && !leaves_state(call) &&
         call.function->required_fields().empty() && !call.arguments.empty() &&
         std::ranges::all_of(call.arguments, [&walk](const Variable* argument) {
           return is_given(argument, walk);
         });
}

/// What the twins of a call have in common with it.
std::vector<uint64_t> word_and_arguments(const Variable& call) {
  std::vector<uint64_t> key = {static_cast<uint64_t>(call.function->id())};
  for (const Variable* argument : call.arguments) {
    const bool is_field = argument->kind == VariableKind::field;
    key.push_back(static_cast<uint64_t>(is_field));
    key.push_back(is_field ? argument->column_id : std::bit_cast<uint64_t>(argument->value));
  }
  return key;
}

void note_twins(const CompiledScript& script, const PlanWalk& walk) {
  std::map<std::vector<uint64_t>, std::vector<Variable*>> calls;
  for (Variable* call : walk.calls()) {
    call->twin = nullptr;
    const bool can_have = !script.sets_variables && can_have_twins(*call, walk);
    if (can_have) calls[word_and_arguments(*call)].push_back(call);
  }
  for (const auto& [key, twins] : calls) {
    if (twins.size() < 2) continue;
    for (Variable* call : twins) call->twin = twins.front();
  }
}

}  // namespace

void Plan::make(CompiledScript& script, const DataTable& table) {
  if (!script.planned_layout) script.shares_columns = shares_columns(script, table);
  script.planned_layout = table.layout();
  const PlanWalk walk(script);
  each_in_full_ = walk.each_in_full();
  find_ways(script, walk);
  note_twins(script, walk);
  if (!script.shares_columns && script.may_remember) plan_memories(script, walk);
}

void Plan::find_ways(const CompiledScript& script, const PlanWalk& walk) {
  const auto& statements = script.statement_list;
  ways_.assign(statements.size(), {});
  is_whole_ = !each_in_full_;
  for (size_t i = 0; i < statements.size(); ++i) {
    const StatementParts& parts = walk.statements()[i];
    const Writer* writer = walk.writer_of(statements[i]->column_id);
    ways_[i].by_columns = parts.has_columns && (writer == nullptr || writer->is_alone) &&
                          std::ranges::none_of(parts.arguments, [&walk](const Variable* argument) {
                            return is_in_conflict(walk.uses_of(*argument));
                          });
    ways_[i].revisits_state = parts.revisits_state;
    is_whole_ &= parts.looks_back;
  }
  note_side_by_side(walk);
  note_reads(walk);
  if (!each_in_full_) refuse_what_rests_on_others();
  is_whole_ &= std::ranges::all_of(ways_, [](const Way& way) { return way.by_columns; });
}

/// Calls that their statements come to at each row, once.
void Plan::note_side_by_side(const PlanWalk& walk) {
  for (Variable* call : walk.calls()) {
    const Uses uses = walk.uses_of(*call);
    if (uses.shared || uses.reach != Reach() || !can_go_early(*call, walk)) continue;
    ways_[static_cast<size_t>(uses.first_statement)].side_by_side.push_back(call);
  }
}

void Plan::note_reads(const PlanWalk& walk) {
  given_.clear();
  for (uint32_t i = 0; i < ways_.size(); ++i) {
    const StatementParts& parts = walk.statements()[i];
    for (const Variable* read : parts.reads) {
      const Writer* found = walk.writer_of(read->column_id);
      if (found == nullptr) {
        if (read->column_index != -1) given_.push_back(read->column_index);
        continue;
      }
      const bool is_later = found->statement > i;
      if (found->statement == i || (is_later && !each_in_full_)) ways_[i].by_columns = false;
      if (each_in_full_ || found->statement == i) continue;
      const auto writer = static_cast<size_t>(found->statement);
      if (writer >= ways_.size()) continue;
      if (is_later || parts.sees_later_rows) ways_[writer].by_columns = false;
      if (!is_later) ways_[i].rests_on.push_back(static_cast<uint32_t>(writer));
    }
  }
}

void Plan::refuse_what_rests_on_others() {
  for (Way& way : ways_) {
    way.by_columns &= std::ranges::all_of(
        way.rests_on, [this](uint32_t writer) { return ways_[writer].by_columns; });
  }
}

}  // namespace quor
