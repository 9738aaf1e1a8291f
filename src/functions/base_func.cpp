#include "functions/base_func.h"

#include <algorithm>

#include "core/data_pool_center.h"
#include "functions/word_row.h"
#include "tables/function_sets.h"
#include "tables/function_table.h"

namespace quor {
namespace {

/// SET may change a number.
bool has_fixed_periods(const Variable& call, size_t first) {
  const auto& arguments = call.arguments;
  return !call.pool->script.sets_variables && first < arguments.size() &&
         std::all_of(arguments.begin() + static_cast<ptrdiff_t>(first), arguments.end(),
                     [](const Variable* argument) {
                       return argument != nullptr && argument->kind == VariableKind::number &&
                              argument->value >= 0.0 && to_int(argument->value) >= 0;
                     });
}

}  // namespace

BaseFunc::BaseFunc(const WordRow& row)
    : name_(row.word),
      id_(quor::function_id(row.word).value_or(-1)),
      takes_parentheses_(!BareFunctionSet.contains(row.word)),
      uses_result_column_(quor::uses_result_column(row.word)),
      required_fields_(quor::required_fields(row.word)),
      traits_(row.traits) {}

Traits traits_of(const Variable& call) {
  Traits traits = call.function->traits();
  if (traits.first_period == Traits::none || has_fixed_periods(call, traits.first_period)) {
    return traits;
  }
  traits.set |= traits.with_other_periods;
  if (traits.has_any(reads_forward | follows_rows)) traits.set &= ~looks_back.set;
  return traits;
}

int64_t lag_of(const Variable& call) {
  const size_t argument = call.function->traits().lag_argument;
  if (argument == 0) return 1;
  const Variable* bars = argument < call.arguments.size() ? call.arguments[argument] : nullptr;
  return bars == nullptr ? 0 : to_int(bars->value);
}

}  // namespace quor
