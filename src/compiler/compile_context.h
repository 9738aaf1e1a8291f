// What the compile passes of one instance work on.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "core/calculate_center.h"
#include "core/data_pool_center.h"

namespace quor {

struct CompileContext {
  explicit CompileContext(DataPoolCenter& owner, CalculateCenter& evaluator)
      : pool(owner), script(owner.script), calculator(evaluator) {}

  /// Removes what a compile has left; data fields stay.
  void reset();

  DataPoolCenter& pool;
  CompiledScript& script;  ///< of the pool
  CalculateCenter& calculator;
  /// Words of data fields and declared names with their column ids, by which a name is refused that
  /// is taken. A compile drops the names that are no words of fields.
  std::map<std::string, uint32_t, std::less<>> declared_names;
};

/// How deep calls may nest in one statement; the evaluator's limit holds for what comes out.
inline constexpr int max_call_nesting = max_nesting / 2;

}  // namespace quor
