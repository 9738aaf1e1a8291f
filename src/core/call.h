// What a word receives when one of its calls is evaluated.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/calculate_center.h"
#include "core/data_pool_center.h"
#include "core/status.h"

namespace quor {

class KnownValues;

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
  /// Evaluates an argument at a row that the call has come to at earlier bars, too, from null on. A
  /// value that can't have become another one isn't worked out again.
  Status recall(size_t position, int32_t at_row, double& value) const;

  /// The first row from one on, up to the call's, at which one of `count` arguments would have to
  /// be worked out.
  int32_t recalled_end(int32_t from, size_t first_argument, size_t count) const;

  /// The text of an argument: a quoted text without its quotes, the sign of a dot word, else the
  /// number at this row with six decimals, whatever its status.
  std::string argument_text(size_t position) const;

  DataTable& table() const { return pool.table(); }
  CompiledScript& script() const { return pool.script; }

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

 private:
  KnownValues& known_values() const;
};

}  // namespace quor
