// The walk over a compiled script that its plan rests on: who evaluates which variable, and how.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/compiled_script.h"
#include "core/traits.h"

namespace quor {

/// What makes a call tell something else than its arguments do, or do something else.
inline constexpr Traits of_its_own =
    reads_forward | follows_settings | acts | hides_state | reads_statement | sets_arguments;

/// How a statement comes to a part of it. All false: at each row that it is calculated at, once.
struct Reach {
  bool passed_over = false;  ///< at some rows only, or not in their order
  bool by_period = false;    ///< a period says at which; a call in columns declines such a one
  bool elsewhere = false;    ///< at other rows, too
  bool revisited = false;    ///< at these, back and forth
  bool ahead = false;        ///< at rows that the statements have yet to come to
  bool starts_late = false;  ///< not at the first rows

  bool operator==(const Reach&) const = default;
};

inline constexpr int64_t no_statement = -1;

/// Who evaluates a variable.
struct Uses {
  int64_t first_statement = no_statement;
  bool in_full = false;  ///< a statement that every run calculates from row 0 on
  bool shared = false;   ///< more than one call or expression
  Reach reach;           ///< of all of them together
  /// Calls keep it in a column of its own, or take its series where they find it.
  bool has_own_column = false;
  bool has_other_place = false;

  int64_t statement = no_statement;  ///< the last one that was walked over
  Reach reach_of_statement;
  int level = 0;  ///< the deepest one there

  bool operator==(const Uses&) const = default;
};

/// Who writes a column.
struct Writer {
  int64_t statement = no_statement;  ///< the last one; past all for a row that no statement is at
  bool in_full = false;
  bool is_alone = true;
};

/// What the walk over a statement finds, whatever the others do.
struct StatementParts {
  bool has_columns = true;  ///< no part has to go bar by bar
  bool sees_later_rows = false;
  bool looks_back = true;  ///< alone: no call sees later rows or follows their number
  /// Leaves at a bar what it has left there before, as long as what it reads holds the same.
  bool is_repeatable = true;
  /// Evaluates calls that keep a state again at bars that it has passed. That changes nothing
  /// where all bars have been passed in order, from row 0 on.
  bool revisits_state = false;
  std::vector<const Variable*> reads;      ///< what stands in columns
  std::vector<const Variable*> arguments;  ///< that calls evaluate
};

class PlanWalk {
 public:
  explicit PlanWalk(const CompiledScript& script);

  /// By position.
  const std::vector<StatementParts>& statements() const { return statements_; }
  /// All that a statement evaluates, in the order in which the walk has come to them.
  const std::vector<Variable*>& calls() const { return calls_; }
  /// Of a variable that the walk hasn't come to, nobody's.
  Uses uses_of(const Variable& variable) const;
  /// Null for a column that the script doesn't write.
  const Writer* writer_of(uint32_t column_id) const;
  /// Whether a call of the script gives a number another value.
  bool is_set(const Variable& number) const { return set_numbers_.contains(&number); }

  /// Whether a run takes one statement after the other over all rows.
  bool each_in_full() const { return each_in_full_; }
  /// Whether a call may end a run.
  bool anything_fails() const { return anything_fails_; }

 private:
  void walk_statement(const Variable& statement, int64_t position);
  void walk_elements(const Variable& variable, Reach reach, int level);
  void walk(Variable& variable, Reach reach, int level);
  void walk_call(Variable& call, Reach reach, int level);
  bool note_use(const Variable& variable, Reach reach, int level);
  void note_part(const Variable& variable);
  void note_call(const Variable& call, Reach reach);
  void note_series(const Variable& call, size_t position);
  void note_set_targets(const Variable& call, Reach reach);
  void note_writer(uint32_t column_id, int64_t statement, bool is_in_full);

  const CompiledScript& script_;
  bool each_in_full_ = false;
  bool anything_fails_ = false;
  std::vector<StatementParts> statements_;
  std::vector<Variable*> calls_;
  std::unordered_map<const Variable*, Uses> uses_;
  std::unordered_map<uint32_t, Writer> writers_;  ///< by column id
  std::unordered_set<const Variable*> set_numbers_;
  int64_t position_ = no_statement;  ///< of the statement that is walked over
  bool in_full_ = false;             ///< whether it is calculated so
};

/// Whether the arguments behind the series of the call are numbers.
bool has_fixed_periods(const Variable& call);

/// Whether the call comes to rows of its arguments other than its own, back and forth.
bool revisits_rows(const Variable& call);

}  // namespace quor
