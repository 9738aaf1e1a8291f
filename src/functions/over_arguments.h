// The shape of a word that takes in all of its arguments at one bar, one after the other.
#pragma once

#include <algorithm>

#include "core/base_func.h"
#include "core/call.h"
#include "core/columns.h"

namespace quor {

/// `Fold` gives the start, takes in an argument, and finishes for the number of arguments.
template <typename Fold>
class OverArguments final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return Fold::scan(call);
    double result = Fold::start;
    for (size_t i = 0; i < call.argument_count(); ++i) {
      double x = null_value;
      if (const Status status = call.evaluate(i, x); failed(status)) return status;
      result = Fold::take(result, x);
    }
    return call.answer(Fold::finish(result, call.argument_count()));
  }

  const double* column(const ColumnCall& call) const override {
    double* results = call.scratch();
    std::fill_n(results, call.size(), Fold::start);
    const size_t count = call.argument_count();
    for (size_t argument = 0; argument < count; ++argument) {
      const double* x = call.values(argument);
      if (x == nullptr) return nullptr;
      for (size_t i = 0; i < call.size(); ++i) results[i] = Fold::take(results[i], x[i]);
    }
    for (size_t i = 0; i < call.size(); ++i) results[i] = Fold::finish(results[i], count);
    return results;
  }

  ColumnTraits column_traits() const override { return {.leaves_state = false}; }
};

}  // namespace quor
