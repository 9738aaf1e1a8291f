#include "core/column_plan.h"

#include <algorithm>
#include <unordered_map>

#include "core/base_func.h"

namespace quor {
namespace {

/// Where the words that take an argument without a column of its own keep its series.
class SeriesUses {
 public:
  explicit SeriesUses(std::span<Variable* const> variables) {
    for (const Variable* variable : variables) {
      if (variable->kind == VariableKind::call && variable->function != nullptr) note(*variable);
    }
  }

  /// Whether one word hands the argument a column that another one would not have given it.
  bool in_conflict(const Variable& argument) const {
    const auto use = uses_.find(&argument);
    return use != uses_.end() && use->second.gives_own_column && use->second.others;
  }

 private:
  struct Use {
    bool gives_own_column = false;
    bool others = false;
  };

  void note(const Variable& call) {
    const ColumnTraits traits = call.function->column_traits();
    for (size_t i = 0; i < call.arguments.size(); ++i) {
      const Variable* argument = call.arguments[i];
      if (argument == nullptr || argument->kind != VariableKind::expression) continue;
      Use& use = uses_[argument];
      if (!call.function->by_columns()) {
        use = {true, true};
      } else if (i < traits.series_count && traits.series == SeriesPlace::own_column) {
        use.gives_own_column = true;
      } else if (i < traits.series_count && traits.series != SeriesPlace::nowhere) {
        use.others = true;
      }
    }
  }

  std::unordered_map<const Variable*, Use> uses_;
};

}  // namespace

/// Walks over the parts of one statement.
class ColumnPlan::Inspection {
 public:
  Inspection(const SeriesUses& uses, Entry& entry) : uses_(uses), entry_(entry) {}

  void inspect(const Variable& variable, Reach reach) {
    if (++level_ > most_column_levels) {
      refuse();
    } else {
      inspect_kind(variable, reach);
    }
    --level_;
  }

  /// Looks at what a statement evaluates at every row.
  void inspect_statement(const Program& program) {
    inspect_program(program, {});
    for (const Step& step : program.steps) {
      note_side_by_side(step.right.variable);
      note_side_by_side(step.left.variable);
    }
    note_side_by_side(program.result.variable);
  }

  void inspect_program(const Program& program, Reach reach) {
    if (program.ending != Ending::value) refuse();
    for (const Step& step : program.steps) {
      if (step.kind == Step::Kind::discard) refuse();
      inspect_operand(step.right, reach);
      inspect_operand(step.left, reach);
    }
    inspect_operand(program.result, reach);
  }

 private:
  void refuse() { entry_.by_columns = false; }

  void note_side_by_side(Variable* operand) {
    const bool is_call = operand != nullptr && operand->kind == VariableKind::call;
    if (!is_call || operand->function == nullptr || operand->arguments.empty()) return;
    const auto is_number = [](const Variable* argument) {
      return argument != nullptr && argument->kind == VariableKind::number;
    };
    const Variable* first = operand->arguments.front();
    if (operand->function->column_traits().side_by_side && first != nullptr &&
        first->kind == VariableKind::field && first->has_column() &&
        std::all_of(operand->arguments.begin() + 1, operand->arguments.end(), is_number)) {
      entry_.side_by_side.push_back(operand);
    }
  }

  void inspect_operand(const Operand& operand, Reach reach) {
    if (operand.variable != nullptr) inspect(*operand.variable, reach);
  }

  void inspect_kind(const Variable& variable, Reach reach) {
    switch (variable.kind) {
      case VariableKind::number:
        return;
      case VariableKind::field:
        if (variable.column_index == -1) refuse();
        entry_.reads.push_back(variable.column_index);
        return;
      case VariableKind::expression:
        inspect_expression(variable, reach);
        return;
      case VariableKind::call:
        inspect_call(variable, reach);
        return;
      default:
        refuse();
    }
  }

  void inspect_expression(const Variable& variable, Reach reach) {
    if (variable.is_text()) return;
    if (!variable.elements.empty()) {
      inspect_program(variable.program, reach);
    } else if (!variable.is_draw_null()) {
      refuse();
    }
  }

  void inspect_call(const Variable& call, Reach reach) {
    if (call.function == nullptr) {
      refuse();
      return;
    }
    const ColumnTraits traits = call.function->column_traits();
    const Traits known = traits_of(call);
    const bool has_state = leaves_state(call);
    if (!call.function->by_columns() || (has_state && reach.passed_over)) refuse();
    entry_.looks_back &= known.has(looks_back);
    entry_.sees_later_rows |= known.has(reads_forward) || !known.has_any(looks_back | follows_rows);
    entry_.revisits_state |= has_state && reach.elsewhere;
    for (size_t i = 0; i < call.arguments.size(); ++i) {
      if (!call.function->reads_argument(i)) continue;
      const Variable* argument = call.arguments[i];
      if (argument == nullptr || uses_.in_conflict(*argument)) refuse();
      if (argument == nullptr) continue;
      // A statement of the same text has the series in its column.
      const bool reads_column = traits.series != SeriesPlace::nowhere && i < traits.series_count;
      if (reads_column && argument->has_column()) entry_.reads.push_back(argument->column_index);
      inspect(*argument, reach_of_argument(call, i, reach));
    }
  }

  const SeriesUses& uses_;
  Entry& entry_;
  int level_ = 0;
};

void ColumnPlan::make(std::span<Variable* const> statements, std::span<Variable* const> variables,
                      bool each_in_full) {
  const SeriesUses uses(variables);
  entries_.assign(statements.size(), {});
  columns_.clear();
  given_.clear();
  for (size_t i = 0; i < statements.size(); ++i) {
    const Variable& statement = *statements[i];
    int32_t column = statement.column_id == no_column ? -1 : statement.column_index;
    if (statement.kind == VariableKind::expression) {
      Inspection(uses, entries_[i]).inspect_statement(statement.program);
      if (names_own_column(statement)) column = -1;
    } else if (statement.kind != VariableKind::number) {
      entries_[i].by_columns = false;
    }
    columns_.push_back(column);
  }
  note_views(each_in_full);
  if (!each_in_full) refuse_what_rests_on_others();
  is_whole_ = !each_in_full && std::ranges::all_of(entries_, [](const Entry& entry) {
    return entry.by_columns && entry.looks_back;
  });
}

void ColumnPlan::note_views(bool each_in_full) {
  std::unordered_map<int32_t, uint32_t> writers;
  for (uint32_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i] == -1) continue;
    const auto [writer, first] = writers.try_emplace(columns_[i], i);
    if (first) continue;
    entries_[writer->second].by_columns = false;
    entries_[i].by_columns = false;
  }
  for (uint32_t i = 0; i < entries_.size(); ++i) {
    Entry& reader = entries_[i];
    std::erase_if(reader.side_by_side, [&writers](const Variable* call) {
      return writers.contains(call->arguments.front()->column_index);
    });
    for (const int32_t column : reader.reads) {
      const auto found = writers.find(column);
      if (found == writers.end()) {
        if (column != -1) given_.push_back(column);
        continue;
      }
      const uint32_t writer = found->second;
      if (writer == i) reader.by_columns = false;
      if (each_in_full) continue;
      if (writer > i || reader.sees_later_rows) entries_[writer].by_columns = false;
      if (writer > i) reader.by_columns = false;
      if (writer < i) reader.rests_on.push_back(writer);
    }
  }
}

void ColumnPlan::refuse_what_rests_on_others() {
  for (Entry& entry : entries_) {
    entry.by_columns &= std::ranges::all_of(
        entry.rests_on, [this](uint32_t writer) { return entries_[writer].by_columns; });
  }
}

}  // namespace quor
