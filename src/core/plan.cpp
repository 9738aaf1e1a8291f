#include "core/plan.h"

#include <algorithm>
#include <array>
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

/// Whether a call of some words that its statement comes to at each row, once, over one series and
/// else numbers.
bool can_go_beside(const Variable& call, const PlanWalk& walk) {
  const Uses uses = walk.uses_of(call);
  return call.kind == VariableKind::call && call.function != nullptr && !uses.shared &&
         uses.reach == Reach() && call.function->column_traits().side_by_side &&
         !call.arguments.empty() && call.arguments.front() != nullptr &&
         std::all_of(call.arguments.begin() + 1, call.arguments.end(), is_number);
}

/// The calls of one word that a statement is: one, or the difference of two. Else nulls.
std::array<Variable*, 2> leaders_of(const Program& program) {
  if (Variable* named = program.lone_reference()) return {named_call(named), nullptr};
  if (program.ending != Ending::value || program.steps.size() != 1) return {};
  const Step& step = program.steps.front();
  if (step.kind != Step::Kind::reduce || step.op != op_minus) return {};
  Variable* left = named_call(step.left.variable);
  Variable* right = named_call(step.right.variable);
  if (left == nullptr || right == nullptr || left == right || left->function != right->function)
    return {};
  return {left, right};
}

/// Whether a call leaves nothing and says the same as any other of its word over the same numbers
/// and fields.
bool can_have_twins(const Variable& call, const PlanWalk& walk) {
  const Traits traits = traits_of(call);
  return traits.has(steady) && !traits.has_any(of_its_own | draws) && call.function->by_columns() &&
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
  if (!script.shares_columns && script.may_remember) plan_memories(walk);
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
    ways_[i].is_repeatable = parts.has_columns && parts.is_repeatable && !parts.revisits_state;
    is_whole_ &= parts.looks_back;
  }
  note_reads(walk);
  if (!each_in_full_) refuse_what_rests_on_others();
  note_followers(script, walk);
  note_side_by_side(walk);
  is_whole_ &= std::ranges::all_of(ways_, [](const Way& way) { return way.by_columns; });
}

/// A call whose series is an earlier statement that is nothing but calls of the same word.
void Plan::note_followers(const CompiledScript& script, const PlanWalk& walk) {
  for (Variable* call : walk.calls()) call->follower = {};
  if (each_in_full_) return;
  for (Variable* call : walk.calls()) {
    if (!can_go_beside(*call, walk) || !call->function->column_traits().is_followed) continue;
    const Variable* series = call->arguments.front();
    const auto statement = static_cast<size_t>(walk.uses_of(*call).first_statement);
    const Writer* writer =
        series->kind == VariableKind::field ? walk.writer_of(series->column_id) : nullptr;
    if (writer == nullptr || writer->statement >= static_cast<int64_t>(statement) ||
        !ways_[statement].by_columns)
      continue;
    const auto [first, second] =
        leaders_of(script.statement_list[static_cast<size_t>(writer->statement)]->program);
    const auto can_lead = [&](const Variable* leader) {
      return leader->function == call->function && leader->follower.call == nullptr &&
             can_go_beside(*leader, walk);
    };
    if (first == nullptr || !can_lead(first) || (second != nullptr && !can_lead(second))) continue;
    first->follower = {call, statement, second != nullptr};
    if (second != nullptr) second->follower = first->follower;
  }
}

/// Calls over a field that the host gives, but for those that lead others.
void Plan::note_side_by_side(const PlanWalk& walk) {
  for (Variable* call : walk.calls()) {
    if (!can_go_beside(*call, walk) || call->follower.call != nullptr) continue;
    const Variable* series = call->arguments.front();
    if (is_number(series) || !is_given(series, walk)) continue;
    const auto statement = static_cast<size_t>(walk.uses_of(*call).first_statement);
    ways_[statement].side_by_side.push_back(call);
  }
}

void Plan::note_reads(const PlanWalk& walk) {
  given_.clear();
  for (uint32_t i = 0; i < ways_.size(); ++i) {
    const StatementParts& parts = walk.statements()[i];
    for (const Variable* read : parts.reads) {
      const Writer* found = walk.writer_of(read->column_id);
      // Between two runs over a bar, what is read from this statement on holds what the first left.
      const bool is_later_or_own = found != nullptr && found->statement >= i;
      ways_[i].is_repeatable &= read->column_index != -1 && !is_later_or_own;
      ways_[i].inputs.push_back(read->column_index);
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
