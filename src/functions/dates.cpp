// Words that tell the date and the time of a bar.
#include "calendar/civil_time.h"
#include "core/call.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

bool is_blank(const BarTime& time) { return time.year1900 == 0; }
int64_t year_of(const BarTime& time) { return time.year1900 + int64_t{1900}; }
int32_t month_of(const BarTime& time) { return time.month0 + 1; }

/// A number made of the moment of a bar. The scan asks for the calendar, because the date of an
/// intraday bar is that of its trading day.
class TimeWord : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) {
      call.script().needs_trade_day = true;
      return Status::ok;
    }
    return call.answer(value_at(call.pool.bar_time(call.row), call.pool));
  }

 private:
  virtual double value_at(const BarTime& time, const DataPoolCenter& pool) const = 0;
};

/// A word that needs nothing but the moment.
template <double (*value_of)(const BarTime&)>
class MomentWord : public TimeWord {
 public:
  using TimeWord::TimeWord;

 private:
  double value_at(const BarTime& time, const DataPoolCenter& /*pool*/) const final {
    return value_of(time);
  }
};

/// As `MomentWord`, null for a blank moment.
template <int64_t (*value_of)(const BarTime&)>
double unless_blank(const BarTime& time) {
  return is_blank(time) ? null_value : static_cast<double>(value_of(time));
}

double year(const BarTime& time) { return static_cast<double>(year_of(time)); }
int64_t month(const BarTime& time) { return month_of(time); }
int64_t day(const BarTime& time) { return time.day; }
int64_t hour(const BarTime& time) { return time.hour; }
double minute(const BarTime& time) { return is_blank(time) ? 0.0 : time.minute; }
double quarter(const BarTime& time) {
  const int quarters_before = is_blank(time) ? 0 : time.month0 / 3;
  return quarters_before + 1;
}

int64_t full_date(const BarTime& time) {
  return year_of(time) * 10000 + int64_t{month_of(time)} * 100 + time.day;
}

/// Two digits of the year, with a 1 in front from 2000 on; a blank moment is one of 1900.
double compact_date(const BarTime& time) {
  const int64_t full_year = year_of(time);
  if (full_year < 1000 || full_year > 9999) return 0.0;
  const int64_t century = full_year >= 2000 ? 10000 : 0;
  const int64_t years = full_year % 100 * 100 + century;
  return static_cast<double>((years + month_of(time)) * 100 + time.day);
}

/// Zeller's congruence, from Sunday as 0; a blank moment is counted like any other.
double weekday(const BarTime& time) {
  const bool ends_year_before = month_of(time) < 3;
  const int64_t m = month_of(time) + (ends_year_before ? 12 : 0);
  const int64_t y = year_of(time) - (ends_year_before ? 1 : 0);
  const int64_t c = y / 100;
  const int64_t d = y - c * 100;
  const int64_t t = 13 * (m + 1) / 5 + time.day + d + d / 4 + c / 4 + 5 * c;
  return static_cast<double>((t - 1) % 7);
}

int64_t seconds_since_midnight(const BarTime& time) {
  return (time.hour * 60 + time.minute) * 60 + time.second;
}

using YEAR = MomentWord<year>;
using MONTH = MomentWord<unless_blank<month>>;
using DAY = MomentWord<unless_blank<day>>;
using HOUR = MomentWord<unless_blank<hour>>;
using MINUTE = MomentWord<minute>;
using QUARTER = MomentWord<quarter>;
using DATE = MomentWord<unless_blank<full_date>>;
using DATE1 = MomentWord<compact_date>;
using WEEKDAY = MomentWord<weekday>;

/// A bar of a day or longer has the close of the session as its time.
class TIME final : public TimeWord {
  using TimeWord::TimeWord;

  double value_at(const BarTime& time, const DataPoolCenter& pool) const override {
    if (pool.is_long_period()) return 1500.0;
    if (is_blank(time)) return null_value;
    const int32_t hour_and_minute = time.hour * 100 + time.minute;
    const bool has_seconds = pool.period.value == 0;
    return has_seconds ? hour_and_minute * 100 + time.second : hour_and_minute;
  }
};

/// Alone of the family it doesn't ask for the calendar, since no trading day changes it.
class TIME0 final : public MomentWord<unless_blank<seconds_since_midnight>> {
 public:
  using MomentWord::MomentWord;

  Status execute(const Call& call) const override {
    return call.scan ? Status::ok : TimeWord::execute(call);
  }
};

constexpr Traits of_calendar = looks_back | acts | follows_settings;

constexpr WordRow date_rows[] = {
    word_row<YEAR>("YEAR", 44, of_calendar | bare),
    word_row<MONTH>("MONTH", 29, of_calendar | bare),
    word_row<DAY>("DAY", 48, of_calendar | bare),
    word_row<HOUR>("HOUR", 36, of_calendar | bare),
    word_row<MINUTE>("MINUTE", 19, of_calendar | bare),
    word_row<QUARTER>("QUARTER", 118, of_calendar | bare),
    word_row<DATE>("DATE", 35, of_calendar | bare),
    word_row<DATE1>("DATE1", 116, of_calendar | bare),
    word_row<WEEKDAY>("WEEKDAY", 79, of_calendar | bare),
    word_row<TIME>("TIME", 43, of_calendar | bare | hides_field),
    word_row<TIME0>("TIME0", 31, of_calendar | bare),
};

}  // namespace

std::span<const WordRow> date_words() { return date_rows; }

}  // namespace quor
