// The shape of a word that combines the values of its arguments at one bar and keeps no state.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "core/base_func.h"
#include "core/call.h"
#include "core/columns.h"
#include "core/value.h"
#include "platform/processor.h"

namespace quor {

/// Evaluates `count` arguments in order and writes what `function` makes of them, a number or a
/// truth. A function that gives an empty optional leaves the caller's start value.
template <size_t count, auto function>
class OneBar final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(count);
    std::array<double, count> values;
    values.fill(null_value);
    for (size_t i = 0; i < count; ++i) {
      const Status status = call.evaluate(i, values[i]);
      if (failed(status)) return status;
    }
    const auto value = std::apply(function, values);
    if constexpr (std::same_as<decltype(value), const std::optional<double>>) {
      call.result = value.value_or(call.result);
    } else {
      call.result = value;
    }
    return Status::ok;
  }

  const double* column(const ColumnCall& call) const override {
    return values_of(call, std::make_index_sequence<count>());
  }

  ColumnTraits column_traits() const override {
    return {.leaves_state = false, .keeps_start = may_write_nothing};
  }

 private:
  static constexpr bool may_write_nothing =
      std::same_as<decltype(std::apply(function, std::array<double, count>())),
                   std::optional<double>>;

  template <size_t... position>
  static const double* values_of(const ColumnCall& call, std::index_sequence<position...>) {
    const std::array<const double*, count> arguments = {call.values(position)...};
    if (std::ranges::find(arguments, nullptr) != arguments.end()) return nullptr;
    double* values = call.scratch();
    if constexpr (may_write_nothing) {
      for (size_t i = 0; i < call.size(); ++i) {
        values[i] = function(arguments[position][i]...).value_or(call.start);
      }
    } else {
      wherever_wide([=, size = call.size()] {
        for (size_t i = 0; i < size; ++i) values[i] = function(arguments[position][i]...);
      });
    }
    return values;
  }
};

template <auto function>
using OneArgument = OneBar<1, function>;
template <auto function>
using TwoArguments = OneBar<2, function>;
template <auto function>
using ThreeArguments = OneBar<3, function>;

}  // namespace quor
