#include "core/base_func.h"

#include <algorithm>
#include <span>

#include "core/data_pool_center.h"

namespace quor {
namespace {

/// SET may change a number.
bool has_usual_periods(const Variable& call, size_t first) {
  const auto& arguments = call.arguments;
  return !call.pool->script.sets_variables && first < arguments.size() &&
         std::all_of(arguments.begin() + static_cast<ptrdiff_t>(first), arguments.end(),
                     [](const Variable* argument) {
                       return argument != nullptr && argument->kind == VariableKind::number &&
                              argument->value >= 0.0 && to_int(argument->value) >= 0;
                     });
}

}  // namespace

Traits traits_of(const Variable& call) {
  Traits traits = call.function->traits();
  if (traits.first_period == Traits::none || has_usual_periods(call, traits.first_period)) {
    return traits;
  }
  traits.set |= traits.with_other_periods;
  if (traits.has_any(reads_forward | follows_rows)) traits.set &= ~looks_back.set;
  return traits;
}

bool leaves_state(const Variable& call) {
  const ColumnTraits traits = call.function->column_traits();
  const bool keeps_series_alone =
      call.function->by_columns() && traits.series != SeriesPlace::nowhere &&
      !call.function->traits().has(has_result_column) && !traits.keeps_results;
  if (!traits.leaves_state || !keeps_series_alone) return traits.leaves_state;
  const std::span arguments(call.arguments);
  return !std::ranges::all_of(arguments.first(std::min(traits.series_count, arguments.size())),
                              [](const Variable* argument) {
                                return argument != nullptr &&
                                       argument->kind == VariableKind::field &&
                                       argument->has_column();
                              });
}

bool has_state(const Variable& argument) {
  if (argument.kind == VariableKind::expression) {
    return std::ranges::any_of(argument.elements, [](const MathElement& element) {
      return element.variable != nullptr && has_state(*element.variable);
    });
  }
  if (argument.kind != VariableKind::call || argument.function == nullptr) return false;
  return leaves_state(argument) ||
         std::ranges::any_of(argument.arguments, [](const Variable* inner) {
           return inner != nullptr && has_state(*inner);
         });
}

bool may_keep_start(Variable& argument) {
  const Variable* call = named_call(&argument);
  return call != nullptr && call->function->column_traits().keeps_start;
}

Variable* named_call(Variable* variable) {
  while (variable != nullptr && variable->kind == VariableKind::expression) {
    variable = variable->program.lone_reference();
  }
  const bool is_call = variable != nullptr && variable->kind == VariableKind::call;
  return is_call && variable->function != nullptr ? variable : nullptr;
}

}  // namespace quor
