// Words that choose. A branch that isn't taken isn't evaluated, so what its words keep from bar to
// bar stands still.
#include "core/call.h"
#include "core/value.h"
#include "functions/base_func.h"
#include "functions/families.h"

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
};
using IFF = Chain<false, false>;
using IFN = Chain<true, true>;

constexpr WordRow words[] = {
    word_row<IF>("IF", steady),
    word_row<IFELSE>("IFELSE", steady),
    word_row<IFF>("IFF", steady),
    word_row<IFN>("IFN", steady),
};

}  // namespace

std::span<const WordRow> branching_words() { return words; }

}  // namespace quor
