// What the compile passes of one instance work on.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "core/calculate_center.h"
#include "core/data_pool_center.h"

namespace quor {

struct CompileContext {
  explicit CompileContext(DataPoolCenter& owner, CalculateCenter& evaluator)
      : pool(owner), script(owner.script), calculator(evaluator) {}

  /// Removes what a compile has left; data fields stay.
  void reset();
  /// Declares a data field that scripts read, for as long as the instance lives, and enters its
  /// word into the declared names. With `add_column` set the field gets its column at once; of a
  /// word that is there already the table gets the old column, too.
  void add_reserved_variable(std::string_view word, uint32_t column_id, bool add_column);
  /// As `add_reserved_variable` for a reference that the script makes, and that goes with it.
  void add_reference(std::string_view word, uint32_t column_id);

  DataPoolCenter& pool;
  CompiledScript& script;  ///< of the pool
  CalculateCenter& calculator;
  /// Words of data fields and declared names with their column ids, by which a name is refused that
  /// is taken. A compile drops the names that are no words of fields.
  std::map<std::string, uint32_t, std::less<>> declared_names;

 private:
  void enter(Variable& variable, bool add_column);
};

/// How deep calls may nest in one statement; the evaluator's limit holds for what comes out.
inline constexpr int max_call_nesting = max_nesting / 2;

}  // namespace quor
