// The trading day of a bar.
#include <algorithm>
#include <charconv>

#include "calendar/trade_day_cache.h"
#include "calendar/trade_day_help.h"
#include "callbacks/host_callbacks.h"

namespace quor::trade_day_help {
namespace {

/// Says why a bar keeps its own date.
void keep_date(std::string_view reason, std::string_view detail, uint64_t uuid) {
  if (!is_logged(log_mapping)) return;
  std::string line = "[trade_day_help::try_get_trade_day_time_tm] ";
  log(log_mapping, line.append(reason).append(detail), uuid);
}

/// How far the sessions of the market move to stand in UTC+8, with daylight saving at the bar.
int64_t zone_shift(const TradeDayModel& model, const BarTime& bar) {
  const auto& ranges = model.daylight_save_times;
  const auto saving = std::ranges::find_if(
      ranges, [&bar](const TradeSession& range) { return is_inside(bar, range.start, range.end); });
  const int64_t minutes = saving == ranges.end() ? 0 : saving->offset;
  return (480 - minutes) * 60 - model.timezone_offset;
}

bool is_special_time(const TradeDayModel& model, std::string_view date, const BarTime& bar) {
  if (model.special_trade_times.empty()) return false;
  const auto ranges = model.special_trade_times.find(std::string(date));
  return ranges != model.special_trade_times.end() &&
         std::ranges::any_of(ranges->second, [&bar](const SpecialTimeRange& range) {
           return is_inside(bar, range.start, range.end);
         });
}

/// The first range around the bar that has sessions; null if there is none. Its dates stand at
/// midnight, so the last one isn't in it.
const TradeTimeRange* sessions_at(const TradeDayModel& model, const BarTime& bar) {
  const auto range =
      std::ranges::find_if(model.trade_times, [&bar](const TradeTimeRange& candidate) {
        return is_inside(bar, candidate.start_date, candidate.end_date) &&
               !candidate.sessions.empty();
      });
  return range == model.trade_times.end() ? nullptr : &*range;
}

/// A trade date and what surrounds it.
struct TradingDay {
  const TradeDates& dates;
  int64_t index;
  BarTime date;
  int64_t shift;
};

/// When the first session of the day begins, which may be on an evening before. Found by trade
/// dates, the opening stays in the market's own zone.
BarTime opening(const TradingDay& day, const TradeSession& first) {
  const BarTime open = shifted(join(day.date, first.start), day.shift);
  if (first.offset == 0) return open;
  if (first.trans_day_type == "1") {
    const std::optional<BarTime> date = day.dates.at(day.index - first.offset);
    return date ? join(*date, first.start) : open;
  }
  if (first.trans_day_type == "2") return shifted(open, int64_t{first.offset} * 86400);
  return open;
}

/// The date of the trading day to which a bar between two of them belongs. Beyond the ends of the
/// list it is the date of the opening, also behind the close.
BarTime date_of_bar(const TradingDay& day, const std::vector<TradeSession>& sessions,
                    const BarTime& bar) {
  const BarTime open = opening(day, sessions.front());
  const BarTime close = shifted(join(day.date, sessions.back().end), day.shift);
  if (bar < open) return day.dates.at(day.index + 1).value_or(open);
  if (close < bar) return day.dates.at(day.index - 1).value_or(open);
  return day.date;
}

void map_date(const TradeDayModel& model, std::string_view date, BarTime& time, uint64_t uuid) {
  if (is_special_time(model, date, time)) {
    keep_date("current date is special time: ", date, uuid);
    return;
  }
  const TradeDates& dates = model.trade_dates;
  const std::optional<int64_t> index = dates.find(date);
  if (!index) {
    keep_date("current date is not in trade dates: ", date, uuid);
    return;
  }
  const std::optional<BarTime> trade_date = dates.at(*index);
  if (!trade_date) {
    keep_date("trade_date_str convert fail, value is ", dates.text(*index), uuid);
    return;
  }
  const TradeTimeRange* range = sessions_at(model, time);
  if (range == nullptr) return;
  const TradingDay day{dates, *index, *trade_date, zone_shift(model, time)};
  time = join(date_of_bar(day, range->sessions, time), time);
}

void map_key(int64_t row_key, const std::string& key, BarTime& time, uint64_t uuid) {
  char digits[24];
  const char* end = std::to_chars(digits, digits + sizeof digits, row_key).ptr;
  const std::string_view text(digits, static_cast<size_t>(end - digits));
  if (text.size() < 8) {
    keep_date("date_time_str is empty or date_time_str length is less than 8.", {}, uuid);
    return;
  }
  const ModelPointer model = find_model(key);
  if (model == nullptr || model->trade_dates.empty()) {
    keep_date("cache does not find this key :", key, uuid);
    return;
  }
  map_date(*model, text.substr(0, 8), time, uuid);
}

}  // namespace

void try_get_trade_day_time_tm(int64_t row_key, BarTime& time, const std::string& security,
                               const std::string& market, uint64_t uuid) {
  std::string key;
  try {
    if (security.empty() || market.empty()) {
      keep_date("security or market str is empty.", {}, uuid);
      return;
    }
    key = cache_key(security, market);
    map_key(row_key, key, time, uuid);
  } catch (...) {
    drop_model(key);
    log_exception("[try_get_trade_day_time_tm]", " unknown exception occurs in catch...", uuid);
  }
}

}  // namespace quor::trade_day_help
