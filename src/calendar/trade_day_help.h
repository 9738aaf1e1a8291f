// Trading calendars, one per security and market for the whole process, and what they are for: the
// trading day of an intraday bar.
#pragma once

#include <cstdint>
#include <string>

#include "calendar/civil_time.h"

/// Any thread may call in. Neither lets an exception out: failure shows in the log only.
namespace quor::trade_day_help {

/// Asks the host for the calendar of a security between two dates, unless a calendar with trade
/// dates is there. A calendar that can't be used is not kept.
void init_security_trade_day_model(const std::string& security, const std::string& market,
                                   const std::string& start_date, const std::string& end_date,
                                   uint64_t uuid);

/// Replaces the date of a bar by that of its trading day: a bar behind the last session belongs to
/// the next one. `time` is the decoded row key; it stays where the calendar can't tell. A calendar
/// that turns out to be faulty is dropped.
void try_get_trade_day_time_tm(int64_t row_key, BarTime& time, const std::string& security,
                               const std::string& market, uint64_t uuid);

}  // namespace quor::trade_day_help
