// What a call keeps beside its columns to get at the next bar's value sooner.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/row_changes.h"

namespace quor {

/// What is known of the rows up to one. It never changes a value, so a word may drop it at any
/// time. The calculator cuts it at the first row that intake or a reading has changed and at the
/// start of a run, so that it is never older than what it was made from.
class CallMemory {
 public:
  virtual ~CallMemory() = default;

  /// Drops what comes from a row or those behind it.
  void cut(int32_t row) {
    if (row <= 0) goes_by_values_ = false;
    drop_from(std::max(row, 0));
  }

  /// A call that comes to its rows out of their order goes by values: from here on it takes in
  /// only values that are known (`Call::recall`), and each time drops what rests on results that
  /// have changed since the last one.
  void go_by_values(const RowChanges& changes) {
    if (goes_by_values_ && seen_ != changes.now()) cut(changes.first_since(seen_));
    goes_by_values_ = true;
    seen_ = changes.now();
  }
  bool goes_by_values() const { return goes_by_values_; }
  /// The call has come to all rows before its own.
  void go_in_order() { goes_by_values_ = false; }

 private:
  /// The row isn't negative.
  virtual void drop_from(int32_t row) = 0;

  uint64_t seen_ = 0;  ///< the moment up to which changes have been taken in
  bool goes_by_values_ = false;
};

}  // namespace quor
