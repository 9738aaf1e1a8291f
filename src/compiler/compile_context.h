// What the compile passes of one instance work on.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "core/calculate_center.h"
#include "core/data_pool_center.h"

namespace quor {

/// Names and constants of the compiled script. The maps are ordered by bytes.
struct CompileContext {
  explicit CompileContext(DataPoolCenter& owner, CalculateCenter& evaluator)
      : pool(owner), calculator(evaluator) {}

  DataPoolCenter& pool;
  CalculateCenter& calculator;
  /// CONST statements and parameter defaults.
  std::map<std::string, double, std::less<>> constants;
  /// Reserved words and declared names with their column ids; the check for duplicates.
  std::map<std::string, uint32_t, std::less<>> declared_names;
  /// Variables without a column by their normalised text, for the host to read by argument id.
  std::map<std::string, Variable*, std::less<>> argument_variables;
};

/// How deep calls may nest in one statement; the evaluator's limit holds for what comes out.
inline constexpr int max_call_nesting = max_nesting / 2;

}  // namespace quor
