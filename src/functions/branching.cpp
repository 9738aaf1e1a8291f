// Words that choose. A branch that isn't taken isn't evaluated, so what its words keep from bar to
// bar stands still.
#include <array>

#include "core/base_func.h"
#include "core/call.h"
#include "core/columns.h"
#include "core/reduce.h"
#include "core/value.h"
#include "platform/processor.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// What an argument writes, else null. A failure goes unnoticed: its text is dropped, too.
double value_in_silence(const Call& call, size_t position) {
  const size_t text_size = call.error.size();
  double value = null_value;
  ignore_status(call.evaluate(position, value));
  call.error.resize(text_size);
  return value;
}

constexpr ColumnTraits choosing = {
    .leaves_state = false, .passes_over = true, .passed_over_from = 1};

/// A null condition is true, because it isn't equal to 0.
double choose(const Call& call) {
  if (call.argument_count() < 3) return null_value;
  return value_in_silence(call, value_in_silence(call, 0) != 0.0 ? 1 : 2);
}

/// The two differ in what a scan leaves as the value.
template <bool scan_writes_zero>
class Choice final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (!call.scan) {
      call.result = choose(call);
    } else if (scan_writes_zero) {
      call.result = 0.0;
    }
    return Status::ok;
  }
  const double* column(const ColumnCall& call) const override {
    if (call.argument_count() < 3) return call.everywhere(null_value);
    std::array<const double*, 3> arguments;
    for (size_t i = 0; i < 3; ++i) {
      arguments[i] = call.values(i);
      if (arguments[i] == nullptr) return nullptr;
    }
    double* result = call.scratch();
    wherever_wide([arguments, result, size = call.size()] {
      QUOR_ROWS_APART
      for (size_t i = 0; i < size; ++i) {
        result[i] = either(arguments[0][i] != 0.0, arguments[1][i], arguments[2][i]);
      }
    });
    return result;
  }
  ColumnTraits column_traits() const override { return choosing; }
  bool reads_argument(size_t position) const override { return position < 3; }
};
using IF = Choice<false>;
using IFELSE = Choice<true>;

/// Condition, value, condition, value, ..., last value: the value behind the first condition that
/// holds. An even count without such a condition gives the last condition. A condition of `IFF`
/// holds unless it is 0, one of `IFN` if it is 0, so that a null holds for `IFF` only.
///
/// What an argument doesn't write keeps the value of the one before. `IFN` goes on after a failure.
template <bool holds_at_zero, bool ignores_failures>
class Chain final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return Status::ok;
    double value = null_value;
    for (size_t position = 0; position < call.argument_count();) {
      const Status status = call.evaluate(position, value);
      if (failed(status) && !ignores_failures) return status;
      if (position % 2 == 1) break;
      position += (value == 0.0) == holds_at_zero ? 1 : 2;
    }
    return call.answer(value);
  }
  const double* column(const ColumnCall& call) const override {
    const size_t count = call.argument_count();
    if (count == 0) return call.everywhere(null_value);
    for (size_t i = 1; i < count; ++i) {
      Variable* argument = call.argument(i);
      if (argument == nullptr || may_keep_start(*argument)) return nullptr;
    }
    // From the last condition, or the value that has none, to the first.
    size_t position = (count - 1) / 2 * 2;
    const double* chain = call.values(position);
    const double* condition = chain;
    if (count % 2 == 0) chain = chosen(call, condition, position, chain);
    while (position > 0 && chain != nullptr) {
      position -= 2;
      condition = call.values(position);
      chain = chosen(call, condition, position, chain);
    }
    return chain;
  }
  ColumnTraits column_traits() const override { return choosing; }

 private:
  /// The value behind a condition where that holds.
  static const double* chosen(const ColumnCall& call, const double* condition, size_t position,
                              const double* otherwise) {
    const double* value = call.values(position + 1);
    if (condition == nullptr || value == nullptr) return nullptr;
    double* result = call.scratch();
    wherever_wide([=, size = call.size()] {
      QUOR_ROWS_APART
      for (size_t i = 0; i < size; ++i) {
        result[i] = either((condition[i] == 0.0) == holds_at_zero, value[i], otherwise[i]);
      }
    });
    return result;
  }
};
using IFF = Chain<false, false>;
using IFN = Chain<true, true>;

constexpr WordRow branching_rows[] = {
    word_row<IF>("IF", 197, steady | branches | opens_line),
    word_row<IFN>("IFN", 53, steady | branches | opens_line),
    word_row<IFELSE>("IFELSE", 77, steady | branches | opens_line),
    word_row<IFF>("IFF", 52, steady),
};

}  // namespace

std::span<const WordRow> branching_words() { return branching_rows; }

}  // namespace quor
