// What answers a function word of the language: all that core sees of functions.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "core/model.h"
#include "core/status.h"
#include "core/traits.h"
#include "core/word_row.h"

namespace quor {

struct Call;
struct ColumnCall;

/// Where a word keeps the values of an argument, its series, from bar to bar.
enum class SeriesPlace : uint8_t {
  nowhere,             ///< it evaluates the argument again
  own_column,          ///< in a column of the argument's own, reserved if there is none
  column_of_argument,  ///< in the argument's own column if there is one, else in one beside it
  column_of_call,      ///< the same with one beside the call
  as_it_stands,        ///< nowhere: it reads the argument's own column as it finds it
};

/// How a word comes to its arguments, and what it does when it is worked out column by column.
struct ColumnTraits {
  bool leaves_state = true;     ///< an evaluation leaves something in cells or in the call
  bool keeps_start = false;     ///< it may leave the caller's start value
  bool passes_over = false;     ///< it may leave arguments unevaluated at a bar
  size_t passed_over_from = 0;  ///< the first of these
  bool revisits = false;        ///< it evaluates arguments at other bars than its own
  bool displaces = false;       ///< with a fixed period, at one other bar, always as far away
  bool starts_late = false;     ///< it leaves arguments unevaluated at the first rows
  bool side_by_side = false;    ///< by `run_side_by_side`
  bool is_followed = false;     ///< by `run_followed`
  bool keeps_results = false;   ///< results of earlier bars, in columns that it takes itself
  SeriesPlace series = SeriesPlace::nowhere;  ///< of its first arguments
  size_t series_count = 1;
};

/// Of words that evaluate all their arguments at their own bar, and have no column form.
inline constexpr ColumnTraits at_own_bar = {};
/// The same for a condition, the first argument; the others are looked at once.
inline constexpr ColumnTraits only_a_condition = {.passes_over = true, .passed_over_from = 1};

/// One object per function word, shared by all calls of all instances and constant.
class BaseFunc {
 public:
  /// The row is constant and outlives the object.
  explicit BaseFunc(const WordRow& row) : row_(row) {}
  virtual ~BaseFunc() = default;
  BaseFunc(const BaseFunc&) = delete;
  BaseFunc& operator=(const BaseFunc&) = delete;

  /// The value of the call at its row goes into `call.result`. Gives a status.
  virtual Status execute(const Call& call) const = 0;
  /// The values of the call over a block of rows, the same as bar by bar with the same cells
  /// written, or null where it has to go bar by bar; then nothing need be put back.
  virtual const double* column(const ColumnCall&) const { return nullptr; }
  /// Whether `column` ever gives values: whether the class has one.
  virtual bool by_columns() const { return row_.by_columns; }
  /// Unless the word says more, its arguments may be evaluated at any bars in any order.
  virtual ColumnTraits column_traits() const { return {.passes_over = true, .revisits = true}; }
  /// Whether the call could be one of these.
  virtual bool can_run_side_by_side(const ColumnCall&) const { return false; }
  /// What `column` does, for several calls over the same rows at once, so that their divisions
  /// overlap. The results stand in the columns of the calls. False where one of them has to go bar
  /// by bar.
  virtual bool run_side_by_side(std::span<const ColumnCall>) const { return false; }
  /// The same for one call or two and a `Follower` of theirs.
  virtual bool run_followed(std::span<const ColumnCall>, const ColumnCall& /*follower*/) const {
    return false;
  }
  /// Whether a bar evaluates the argument at a position.
  virtual bool reads_argument(size_t) const { return true; }

  const WordRow& word() const { return row_; }
  std::string_view name() const { return row_.word; }
  int32_t id() const { return row_.id; }
  /// Bar fields that a call reads without naming them.
  std::span<const std::string_view> required_fields() const { return row_.required_fields; }
  /// What is known of the word, whatever its arguments; `traits_of` tells it of one call.
  Traits traits() const { return row_.traits; }

 private:
  const WordRow& row_;
};

/// The row of a word that is served by the class `Word`.
template <typename Word>
constexpr WordRow word_row(std::string_view word, int32_t id, Traits traits,
                           std::span<const std::string_view> required_fields = {}) {
  return {
      word,
      id,
      traits,
      required_fields,
      !std::is_same_v<decltype(&Word::column), decltype(&BaseFunc::column)>,
      [](const WordRow& row) -> std::unique_ptr<BaseFunc> { return std::make_unique<Word>(row); }};
}

/// What is known of a call of a word, given its arguments.
Traits traits_of(const Variable& call);

/// Whether an evaluation of the call leaves something in cells or in the call. A word that keeps a
/// series leaves nothing where the series is a field, which stands in its column already.
bool leaves_state(const Variable& call);

/// Whether an evaluation of an argument leaves something in cells or in calls.
bool has_state(const Variable& argument);

/// Whether an argument may write nothing, so that its caller's start value stands.
bool may_keep_start(Variable& argument);

/// The call that a variable is, or that its expression only names; null for another.
Variable* named_call(Variable* variable);

}  // namespace quor
