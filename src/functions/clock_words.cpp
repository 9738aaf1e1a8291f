// Words that tell the wall clock and the period of the instance, and conversions of times.
#include "core/call.h"
#include "core/value.h"
#include "platform/clock.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The wall clock where the machine stands.
template <double (*value_of)(const LocalTime&)>
class WallClockWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const final {
    if (!call.scan) call.result = value_of(local_time());
    return Status::ok;
  }
};

/// Two digits of the year behind a 1, also before 2000.
double clock_date(const LocalTime& now) {
  if (now.year < 1000 || now.year > 9999) return null_value;
  return ((now.year % 100 + 100) * 100 + now.month) * 100 + now.day;
}

double clock_time(const LocalTime& now) {
  if (now.year == 0) return null_value;
  return (now.hour * 100 + now.minute) * 100 + now.second;
}

using CURRENTDATE = WallClockWord<clock_date>;
using CURRENTTIME = WallClockWord<clock_time>;

class PERIOD final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (!call.scan) call.result = call.pool.period.value;
    return Status::ok;
  }
};

/// A number of the period that the host has set, null in a scan.
template <int32_t Period::*number>
class PeriodNumber : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const final {
    return call.answer(call.scan ? null_value : call.pool.period.*number);
  }
};

using BARINTERVAL = PeriodNumber<&Period::multiple>;
using BARTYPE = PeriodNumber<&Period::period_class>;

/// A time in another notation.
template <double (*convert)(int32_t)>
class Conversion : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const final {
    if (call.scan) return call.check_count(1);
    double time = null_value;
    const Status status = call.evaluate(0, time);
    if (!failed(status)) call.result = convert(to_int(time));
    return status;
  }
  const double* column(const ColumnCall& call) const final {
    const double* times = call.values(0);
    if (times == nullptr) return nullptr;
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) result[i] = convert(to_int(times[i]));
    return result;
  }
  ColumnTraits column_traits() const final { return {.leaves_state = false}; }
};

/// HHMMSS to seconds since midnight. What has more than six digits, or a sign, gives 0.
double to_seconds(int32_t time) {
  if (time < 0 || time > 999999) return 0.0;
  const int32_t seconds = (time / 10000 * 60 + time / 100 % 100) * 60 + time % 100;
  return seconds;
}

/// Seconds since midnight to HHMMSS, with as many hours as it takes.
double to_clock_digits(int32_t seconds) {
  const int64_t hours = seconds / 3600;
  return static_cast<double>((hours * 100 + seconds / 60 % 60) * 100 + seconds % 60);
}

using TIMETOT0 = Conversion<to_seconds>;
using T0TOTIME = Conversion<to_clock_digits>;

constexpr WordRow clock_rows[] = {
    word_row<CURRENTDATE>("CURRENTDATE", 113, looks_back | acts | bare),
    word_row<CURRENTTIME>("CURRENTTIME", 114, looks_back | acts | bare),
    word_row<PERIOD>("PERIOD", 117, steady | follows_settings | bare),
    word_row<BARINTERVAL>("BARINTERVAL", 198, steady | follows_settings | bare),
    word_row<BARTYPE>("BARTYPE", 199, steady | follows_settings | bare),
    word_row<TIMETOT0>("TIMETOT0", 119, steady),
    word_row<T0TOTIME>("T0TOTIME", 120, steady),
};

}  // namespace

std::span<const WordRow> clock_words() { return clock_rows; }

}  // namespace quor
