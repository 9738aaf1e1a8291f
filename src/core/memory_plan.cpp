#include "core/memory_plan.h"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <vector>

#include "core/base_func.h"
#include "core/column_owners.h"
#include "tables/field_table.h"

namespace quor {
namespace {

constexpr int64_t nobody = -1;

/// Who evaluates a variable.
struct Uses {
  int64_t first_statement = nobody;
  bool in_full = false;  ///< a statement that every run calculates from row 0 on
  bool shared = false;   ///< more than one call or expression
  Reach reach;           ///< of all of them together

  bool operator==(const Uses&) const = default;
};

/// What a value at a row comes from.
struct Origin {
  bool steady = true;  ///< the same whenever it is asked for, from that row and earlier ones
  bool has_state = false;
  bool is_safe_state = true;    ///< its calls come to each row after those before it
  bool revisits_state = false;  ///< a call in it comes to rows of a state again
  bool can_fail = false;
  bool for_one_run = false;  ///< steady, but not from one run to the next
  bool from_full_statement = false;
  int64_t newest_statement = nobody;  ///< the last one whose column is read

  void take(const Origin& part) {
    steady &= part.steady;
    has_state |= part.has_state;
    is_safe_state &= part.is_safe_state;
    revisits_state |= part.revisits_state;
    can_fail |= part.can_fail;
    for_one_run |= part.for_one_run;
    from_full_statement |= part.from_full_statement;
    newest_statement = std::max(newest_statement, part.newest_statement);
  }
};

constexpr Origin unknown_origin = {.steady = false};

class MemoryPlan {
 public:
  explicit MemoryPlan(CompiledScript& script) : script_(script) {
    const auto& statements = script_.statement_list;
    for (size_t i = 0; i < statements.size(); ++i) {
      each_in_full_ |= statements[i]->whole_series;
      // A line that only names another one writes what stands there.
      if (names_own_column(*statements[i])) continue;
      note_writer(statements[i]->column_id, static_cast<int64_t>(i), statements[i]->whole_series);
    }
    for (size_t i = 0; i < statements.size(); ++i) {
      const Uses uses = {static_cast<int64_t>(i), statements[i]->whole_series, false, {}};
      visit_elements(*statements[i], uses, 0);
    }
  }

  void apply() {
    for (Variable* call : calls_) {
      const Uses uses = uses_[call];
      call->for_one_run = uses.in_full;
      call->remembering = remembering_of(*call, uses);
    }
  }

 private:
  struct Writer {
    int64_t statement = nobody;
    bool in_full = false;
  };

  void note_writer(uint32_t column_id, int64_t statement, bool in_full) {
    if (column_id == no_column) return;
    Writer& writer = writers_[column_id];
    writer.statement = std::max(writer.statement, statement);
    writer.in_full |= in_full;
  }

  void visit_elements(const Variable& variable, const Uses& from, int level) {
    for (const MathElement& element : variable.elements) {
      if (element.variable != nullptr) visit(*element.variable, from, level);
    }
  }

  /// A variable that is come to again is shared, and so are its parts.
  void visit(Variable& variable, const Uses& from, int level) {
    if (level > max_nesting) return;
    const auto [entry, first] = uses_.try_emplace(&variable, from);
    const Uses before = entry->second;
    Uses& uses = entry->second;
    uses.shared |= !first;
    uses.in_full |= from.in_full;
    uses.reach = either(uses.reach, from.reach);
    if (!first && uses == before) return;
    const Uses here = uses;
    if (variable.kind == VariableKind::expression) visit_elements(variable, here, level + 1);
    if (variable.kind != VariableKind::call || variable.function == nullptr) return;
    if (first) calls_.push_back(&variable);
    anything_fails_ |= traits_of(variable).has(can_fail);
    note_set_targets(variable, here);
    for (size_t i = 0; i < variable.arguments.size(); ++i) {
      if (variable.arguments[i] == nullptr) continue;
      Uses of_argument = here;
      of_argument.reach = reach_of_argument(variable, i, here.reach);
      of_argument.reach.passed_over |= period_decides(variable);
      visit(*variable.arguments[i], of_argument, level + 1);
    }
  }

  /// Whether a period decides which rows a call comes to, if it comes to any. A call in columns
  /// with such a period goes bar by bar of itself.
  static bool period_decides(const Variable& call) {
    const ColumnTraits traits = call.function->column_traits();
    return (traits.leaves_state || traits.revisits) && !has_fixed_periods(call);
  }

  /// A field is written at the row that the call is evaluated at.
  void note_set_targets(const Variable& call, const Uses& uses) {
    if (!call.function->traits().has(sets_arguments)) return;
    const int64_t statement = uses.reach.elsewhere ? INT64_MAX : uses.first_statement;
    for (size_t i = 0; i < call.arguments.size(); i += 2) {
      const Variable* target = call.arguments[i];
      if (target != nullptr && target->kind == VariableKind::field) {
        note_writer(target->column_id, statement, uses.in_full);
      }
    }
  }

  /// Rings, which hidden names typed by a script may form, are unknown.
  const Origin& origin_of(const Variable& variable, int level) {
    const auto [entry, first] = origins_.try_emplace(&variable, unknown_origin);
    if (!first || level > max_nesting) return entry->second;
    const Origin origin = find_origin(variable, level);
    return origins_[&variable] = origin;
  }

  Origin find_origin(const Variable& variable, int level) {
    switch (variable.kind) {
      case VariableKind::field:
        return origin_of_column(variable.column_id);
      case VariableKind::number:
        return {.steady = !script_.sets_variables};
      case VariableKind::expression:
        return origin_of_expression(variable, level);
      case VariableKind::call:
        return variable.function == nullptr ? unknown_origin : origin_of_call(variable, level);
      default:
        return unknown_origin;
    }
  }

  Origin origin_of_column(uint32_t column_id) const {
    const auto writer = writers_.find(column_id);
    if (writer == writers_.end()) return {};
    return {.from_full_statement = writer->second.in_full,
            .newest_statement = writer->second.statement};
  }

  /// An expression that always has a value, so that no evaluation fails.
  Origin origin_of_expression(const Variable& variable, int level) {
    Origin origin;
    if (variable.is_text()) return origin;
    origin.steady = variable.program.ending == Ending::value;
    for (const MathElement& element : variable.elements) {
      if (element.variable != nullptr) origin.take(origin_of(*element.variable, level + 1));
    }
    return origin;
  }

  Origin origin_of_call(const Variable& call, int level) {
    const Traits traits = traits_of(call);
    const ColumnTraits column_traits = call.function->column_traits();
    Origin origin;
    for (const Variable* argument : call.arguments) {
      origin.take(argument == nullptr ? unknown_origin : origin_of(*argument, level + 1));
    }
    for (const std::string_view word : call.function->required_fields()) {
      const auto id = reserved_field_id(word);
      if (id) origin.take(origin_of_column(static_cast<uint32_t>(*id)));
    }
    // A record's columns want every evaluation.
    origin.steady &= is_steady_in_run(call, traits) && !traits.has_any(follows_settings | draws);
    origin.for_one_run |= !traits.has(looks_back);
    origin.can_fail |= traits.has(can_fail);
    if (origin.has_state && goes_out_of_order(call)) origin.is_safe_state = false;
    // What starts late and then looks back comes to rows for the first time behind later ones.
    const bool leaves_rows = column_traits.starts_late || column_traits.passes_over;
    if (origin.revisits_state && leaves_rows) origin.is_safe_state = false;
    origin.revisits_state |= origin.has_state && revisits_rows(call);
    if (leaves_state(call)) {
      origin.has_state = true;
      const Uses& uses = uses_[&call];
      origin.is_safe_state &= !uses.shared || !(uses.reach.passed_over || anything_fails_);
    }
    return origin;
  }

  /// The number of rows doesn't change before the next run; nor do later rows, where the statement
  /// is calculated over all of them.
  bool is_steady_in_run(const Variable& call, Traits traits) {
    return traits.has(repeatable) && (uses_[&call].in_full || !traits.has(reads_forward));
  }

  /// Whether the call may come to a row of its arguments for the first time when it has passed a
  /// later one.
  static bool goes_out_of_order(const Variable& call) {
    return revisits_rows(call) &&
           (call.function->column_traits().passes_over || !has_fixed_periods(call));
  }

  /// Calls whose series stands in cells read them; the others evaluate their arguments again.
  Remembering remembering_of(Variable& call, const Uses& uses) {
    const ColumnTraits traits = call.function->column_traits();
    Origin origin;
    for (size_t i = 0; i < std::min(traits.series_count, call.arguments.size()); ++i) {
      const Variable* argument = call.arguments[i];
      origin.take(argument == nullptr ? unknown_origin : origin_of(*argument, 0));
      // A statement of the same text has the series in its column, and the word reads that.
      if (argument != nullptr && traits.series != SeriesPlace::nowhere) {
        origin.take(origin_of_column(argument->column_id));
      }
    }
    const bool stores =
        traits.series != SeriesPlace::nowhere && traits.series != SeriesPlace::as_it_stands;
    const bool reads_cells = stores && cells_are_final(call);
    call.for_one_run |= origin.for_one_run && !reads_cells;
    const Remembering at_least = origin.steady ? Remembering::unchanged : Remembering::nothing;
    if (origin.newest_statement >= uses.first_statement) return at_least;
    // Rows ahead have the columns of earlier statements only where these are finished first.
    if (uses.reach.ahead && origin.newest_statement != nobody && !each_in_full_) return at_least;
    if (origin.from_full_statement && !uses.in_full) return at_least;
    const bool in_order = origin.steady && origin.is_safe_state;
    const bool leaves_no_trace = !stores && in_order && !origin.has_state && !origin.can_fail;
    if (reads_cells || leaves_no_trace) return Remembering::catching_up;
    return in_order ? Remembering::in_order : at_least;
  }

  /// Whether no evaluation writes a cell of the series before the row of the statement.
  bool cells_are_final(const Variable& call) {
    Variable* series = call.arguments.empty() ? nullptr : call.arguments.front();
    if (series == nullptr) return false;
    const Uses& uses = uses_[series];
    // A call that alone keeps a series notices when a value in it becomes another one.
    return series->kind == VariableKind::field || !uses.reach.revisited ||
           (!uses.shared && !series->has_column());
  }

  CompiledScript& script_;
  std::unordered_map<uint32_t, Writer> writers_;  ///< by column id
  std::unordered_map<const Variable*, Uses> uses_;
  std::vector<Variable*> calls_;
  bool anything_fails_ = false;
  bool each_in_full_ = false;
  std::unordered_map<const Variable*, Origin> origins_;
};

/// Whether a field that the script reads may be a column that one of its variables writes.
bool shares_columns(const CompiledScript& script, const DataTable& table) {
  const uint64_t end = table.next_auxiliary_id() + most_columns * script.variable_count();
  return std::ranges::any_of(script.extra_field_set, [end](int32_t id) {
    const auto column = static_cast<uint32_t>(id);
    return column >= DataTable::first_auxiliary_id && column < end;
  });
}

}  // namespace

void plan_memories(CompiledScript& script, const DataTable& table) {
  script.shares_columns = shares_columns(script, table);
  if (!script.shares_columns) MemoryPlan(script).apply();
  script.memories_are_planned = true;
}

}  // namespace quor
