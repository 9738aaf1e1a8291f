// What a market's calendar tells: trade dates, sessions, daylight saving and special times.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "calendar/civil_time.h"

namespace quor {

struct TradeSession {
  BarTime start;               ///< a time of day; a moment in a range of daylight saving
  BarTime end;                 ///< the same
  int32_t offset = 0;          ///< days from the trade date to the session's; minutes of saving
  std::string trans_day_type;  ///< "1": the offset counts trade dates; "2": calendar days
  bool is_continuous = false;
};

/// The sessions of the trade dates from one date to another.
struct TradeTimeRange {
  BarTime start_date;
  BarTime end_date;
  std::vector<TradeSession> sessions;
};

struct SpecialTimeRange {
  BarTime start;
  BarTime end;
};

/// The trade dates in the order in which the host gave them, as a rule the newest first.
class TradeDates {
 public:
  void append(std::string_view text);

  bool empty() const { return dates_.empty(); }
  const std::string& text(int64_t index) const { return dates_[static_cast<size_t>(index)].text; }

  /// The first position of the date, else that of the last entry that is greater as text; nothing
  /// if there is none. With the newest first, that is the date or the nearest one after it.
  std::optional<int64_t> find(std::string_view date) const;

  /// The date at a position; nothing beyond the list and for a text that is no date. Throws
  /// std::invalid_argument for a text with other signs in the place of digits.
  std::optional<BarTime> at(int64_t index) const;

 private:
  struct TradeDate {
    std::string text;
    bool is_read = false;  ///< whether `date` holds it; a text of another kind is read when needed
    BarTime date;
  };

  std::vector<TradeDate> dates_;
  bool descending_ = true;  ///< no text is greater than the one before it
};

/// Complete, and constant once it is in the cache.
struct TradeDayModel {
  int32_t timezone_offset = 0;  ///< of the market, seconds east of UTC
  TradeDates trade_dates;
  std::vector<TradeTimeRange> trade_times;
  std::unordered_map<std::string, std::vector<SpecialTimeRange>> special_trade_times;
  std::vector<TradeSession> daylight_save_times;
};

}  // namespace quor
