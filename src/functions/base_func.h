// What answers a function word of the language.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/calculate_center.h"
#include "core/data_pool_center.h"
#include "core/status.h"
#include "functions/traits.h"

namespace quor {

struct WordRow;

/// One evaluation of one call: what `execute` receives.
///
/// With `scan` set the evaluation runs at row 0, before any row is calculated: a word then counts
/// its arguments, declares what it needs and makes its record, and computes nothing else.
struct Call {
  DataPoolCenter& pool;
  CalculateCenter& calculator;
  Variable& variable;  ///< the call; all state from bar to bar lies here and in the table
  const int32_t row;   ///< the bar; 0 is the oldest
  const bool scan;
  std::string& error;  ///< text that goes with a status other than 0
  double& result;      ///< holds the caller's start value; it stands if nothing is written

  size_t argument_count() const { return variable.arguments.size(); }
  /// The argument at a position. One that isn't there reads as null with status 2000.
  Variable& argument(size_t position) const {
    Variable* found = position < argument_count() ? variable.arguments[position] : nullptr;
    return found != nullptr ? *found : pool.missing_argument();
  }

  /// Evaluates an argument at this row, with `scan` clear.
  Status evaluate(size_t position, double& value) const {
    return evaluate_at(position, row, value);
  }
  /// Evaluates an argument at this row in the mode of this call, so that nested calls are scanned.
  Status evaluate_passing_scan(size_t position, double& value) const {
    return calculator.evaluate(argument(position), row, scan, error, value);
  }
  /// Evaluates an argument at any row, with `scan` clear.
  Status evaluate_at(size_t position, int32_t at_row, double& value) const {
    return calculator.evaluate(argument(position), at_row, false, error, value);
  }

  /// The text of an argument: a quoted text without its quotes, the sign of a dot word, else the
  /// number at this row with six decimals, whatever its status.
  std::string argument_text(size_t position) const;

  DataTable& table() const { return pool.table(); }

  /// Appends the word (and a suffix) with the statement's line to `error`; gives the status back.
  Status fail(Status status, std::string_view suffix = {}) const;
  /// The answer to a wrong number of arguments: status 7.
  Status wrong_count() const;
  /// The scan of a word that declares nothing: counts the arguments.
  Status check_count(size_t least, size_t most) const;
  Status check_count(size_t expected) const { return check_count(expected, expected); }

  /// Leaves the value with the caller; the last step of a word that has one.
  Status answer(double value) const {
    result = value;
    return Status::ok;
  }
};

struct ColumnCall;

/// Where a word keeps the values of an argument, its series, from bar to bar.
enum class SeriesPlace : uint8_t {
  nowhere,             ///< it evaluates the argument again
  own_column,          ///< in a column of the argument's own, reserved if there is none
  column_of_argument,  ///< in the argument's own column if there is one, else in one beside it
  column_of_call,      ///< the same with one beside the call
  in_place,            ///< nowhere: it reads the argument's own column as it finds it
};

/// What a word does when it is worked out column by column.
struct ColumnTraits {
  bool by_columns = false;      ///< it can be
  bool keeps_state = true;      ///< an evaluation leaves something in cells or in the call
  bool keeps_start = false;     ///< it may leave the caller's start value
  bool passes_over = false;     ///< it may leave arguments unevaluated at a bar
  size_t passed_over_from = 0;  ///< the first of these
  bool revisits = false;        ///< it evaluates arguments at other bars than its own
  SeriesPlace series = SeriesPlace::nowhere;  ///< of its first arguments
  size_t series_count = 1;
};

/// One object per function word, shared by all calls of all instances and constant.
class BaseFunc {
 public:
  explicit BaseFunc(const WordRow& row);
  virtual ~BaseFunc() = default;
  BaseFunc(const BaseFunc&) = delete;
  BaseFunc& operator=(const BaseFunc&) = delete;

  /// The value of the call at its row goes into `call.result`. Gives a status.
  virtual Status execute(const Call& call) const = 0;
  /// The values of the call over a block of rows, the same as bar by bar with the same cells
  /// written, or null where it has to go bar by bar; then nothing need be put back.
  virtual const double* column(const ColumnCall&) const { return nullptr; }
  virtual ColumnTraits column_traits() const { return {}; }
  /// Whether a bar evaluates the argument at a position.
  virtual bool reads_argument(size_t) const { return true; }

  const std::string& name() const { return name_; }
  int32_t id() const { return id_; }
  /// False for a word that is written bare, without an argument list.
  bool takes_parentheses() const { return takes_parentheses_; }
  /// Whether the compiler gives every call a column of its own.
  bool uses_result_column() const { return uses_result_column_; }
  /// Bar fields that a call reads without naming them.
  std::span<const std::string_view> required_fields() const { return required_fields_; }
  /// What is known of the word, whatever its arguments; `traits_of` tells it of one call.
  Traits traits() const { return traits_; }

 private:
  std::string name_;
  int32_t id_;
  bool takes_parentheses_;
  bool uses_result_column_;
  std::span<const std::string_view> required_fields_;
  Traits traits_;
};

/// What is known of a call of a word, given its arguments.
Traits traits_of(const Variable& call);

/// Whether an evaluation of an argument leaves something in cells or in calls.
bool has_state(const Variable& argument);

/// Whether an argument may write nothing, so that its caller's start value stands.
bool may_keep_start(const Variable& argument);

/// How many bars late the call comes to a bar, mostly 0.
int64_t lag_of(const Variable& call);

}  // namespace quor
