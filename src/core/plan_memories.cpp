#include "core/plan_memories.h"

#include <algorithm>
#include <unordered_map>

#include "core/base_func.h"
#include "tables/field_table.h"

namespace quor {
namespace {

/// What a value at a row comes from.
struct Origin {
  bool steady = true;  ///< the same whenever it is asked for, from that row and earlier ones
  bool has_state = false;
  bool has_states_ahead = false;  ///< at later rows, which nobody looks through for changes
  bool is_safe_state = true;      ///< its calls come to each row after those before it
  bool revisits_state = false;    ///< a call in it comes to rows of a state again
  bool can_fail = false;
  bool for_one_run = false;  ///< steady, but not from one run to the next
  bool from_full_statement = false;
  int64_t newest_statement = no_statement;  ///< the last one whose column is read

  void take(const Origin& part) {
    steady &= part.steady;
    has_state |= part.has_state;
    has_states_ahead |= part.has_states_ahead;
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
  explicit MemoryPlan(const PlanWalk& walk) : walk_(walk) {}

  void apply() {
    for (Variable* call : walk_.calls()) {
      const Uses uses = walk_.uses_of(*call);
      call->for_one_run = uses.in_full;
      call->remembering = remembering_of(*call, uses);
    }
  }

 private:
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
        return {.steady = !walk_.is_set(variable)};
      case VariableKind::expression:
        return origin_of_expression(variable, level);
      case VariableKind::call:
        return variable.function == nullptr ? unknown_origin : origin_of_call(variable, level);
      default:
        return unknown_origin;
    }
  }

  Origin origin_of_column(uint32_t column_id) const {
    const Writer* writer = walk_.writer_of(column_id);
    if (writer == nullptr) return {};
    return {.from_full_statement = writer->in_full, .newest_statement = writer->statement};
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
    origin.has_states_ahead |= origin.has_state && traits.has(reads_forward);
    // What starts late, or ahead, and then looks back comes to rows for the first time behind later
    // ones.
    const bool leaves_rows =
        column_traits.starts_late || column_traits.passes_over || traits.has(reads_forward);
    if (origin.revisits_state && leaves_rows) origin.is_safe_state = false;
    origin.revisits_state |= origin.has_state && revisits_rows(call);
    if (leaves_state(call)) {
      origin.has_state = true;
      const Uses uses = walk_.uses_of(call);
      const bool in_order = !uses.reach.passed_over && !uses.reach.by_period;
      origin.is_safe_state &= !uses.shared || (in_order && !walk_.anything_fails());
    }
    return origin;
  }

  /// The number of rows doesn't change before the next run; nor do later rows, where the statement
  /// is calculated over all of them.
  bool is_steady_in_run(const Variable& call, Traits traits) {
    return traits.has(repeatable) && (walk_.uses_of(call).in_full || !traits.has(reads_forward));
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
    const bool is_compared = origin.steady && !origin.has_states_ahead;
    const Remembering at_least = is_compared ? Remembering::unchanged : Remembering::nothing;
    if (origin.newest_statement >= uses.first_statement) return at_least;
    // Rows ahead have the columns of earlier statements only where these are finished first.
    if (uses.reach.ahead && origin.newest_statement != no_statement && !walk_.each_in_full())
      return at_least;
    if (origin.from_full_statement && !uses.in_full) return at_least;
    const bool in_order = origin.steady && origin.is_safe_state &&
                          (!origin.has_states_ahead || passes_all_rows(call, uses.reach));
    const bool leaves_no_trace = !stores && in_order && !origin.has_state && !origin.can_fail;
    if (reads_cells || leaves_no_trace) return Remembering::catching_up;
    return in_order ? Remembering::in_order : at_least;
  }

  /// Whether the call passes its rows one after the other, and leaves none out.
  static bool passes_all_rows(const Variable& call, const Reach& reach) {
    return has_fixed_periods(call) && !reach.passed_over && !reach.by_period && !reach.starts_late;
  }

  /// Whether no evaluation writes a cell of the series before the row of the statement.
  bool cells_are_final(const Variable& call) {
    Variable* series = call.arguments.empty() ? nullptr : call.arguments.front();
    if (series == nullptr) return false;
    const Uses uses = walk_.uses_of(*series);
    // A call that alone keeps a series notices when a value in it becomes another one.
    return series->kind == VariableKind::field || !uses.reach.revisited ||
           (!uses.shared && walk_.writer_of(series->column_id) == nullptr);
  }

  const PlanWalk& walk_;
  std::unordered_map<const Variable*, Origin> origins_;
};

}  // namespace

void plan_memories(const PlanWalk& walk) { MemoryPlan(walk).apply(); }

}  // namespace quor
