// Averages over a moving window, recursive where they can be.
#include "core/data_pool_center.h"
#include "functions/averaging.h"
#include "functions/families.h"

namespace quor {
namespace {

/// The plain average of N bars.
class MA final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  int execute(const Call& call) const override {
    if (call.scan) return scan(call);
    call.result = moving_average(call);
    return 0;
  }

 private:
  static int scan(const Call& call) {
    if (call.argument_count() != 2) return call.wrong_count();
    double period = null_value;
    call.evaluate(1, period);
    call.pool.raise_period(to_int(period));
    call.result = null_value;
    return 0;
  }
};

constexpr WordRow words[] = {
    word_row<MA>("MA"),
};

}  // namespace

std::span<const WordRow> moving_average_words() { return words; }

}  // namespace quor
