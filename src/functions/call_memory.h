// Results that a call carries on from bar to bar, and when they hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/call.h"
#include "functions/base_func.h"

namespace quor {

/// The memory of a call, made at first use. A call has one word and so one type of memory.
template <typename Memory>
Memory& memory_of(const Call& call) {
  std::unique_ptr<CallMemory>& memory = call.variable.memory;
  if (memory == nullptr) memory = std::make_unique<Memory>();
  return static_cast<Memory&>(*memory);
}

/// The cells that the values of some arguments come from.
class Dependencies {
 public:
  /// Whether the arguments below `count` can be taken as known once they have been evaluated: they
  /// consist of words whose value at a bar comes from that bar and those before it alone and is the
  /// same whenever it is worked out. Looks at the arguments anew when the table has got columns.
  bool can_be_remembered(const Call& call, size_t count);

  /// The rows below this one are worth watching once the arguments have been evaluated at `row`:
  /// what lies behind may be evaluated there for the first time, and so change.
  int32_t settled_end(int32_t row) const {
    return static_cast<int32_t>(std::max<int64_t>(row - lag_, 0));
  }

  /// Whether a cell has changed since the last call of `watch`.
  bool have_changed(const DataTable& table) const;
  /// Has changes counted in the rows above `rows`.
  void watch(DataTable& table, int32_t rows);

 private:
  struct Source {
    int32_t column;
    uint32_t changes;
  };

  uint64_t layout_ = UINT64_MAX;
  bool steady_ = false;
  int64_t lag_ = 0;
  std::vector<Source> sources_;
};

}  // namespace quor
