#include "calendar/trade_day_model.h"

#include <algorithm>

namespace quor {

void TradeDates::append(std::string_view text) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  TradeDate entry{.text = std::string(text), .date = {}};
  entry.is_read = std::ranges::all_of(text, is_digit) && read_date(text, entry.date);
  descending_ = descending_ && (dates_.empty() || dates_.back().text >= text);
  dates_.push_back(std::move(entry));
}

std::optional<int64_t> TradeDates::find(std::string_view date) const {
  const auto is_greater = [date](const TradeDate& entry) { return entry.text > date; };
  const auto end = dates_.end();
  const auto place = descending_ ? std::ranges::partition_point(dates_, is_greater)
                                 : std::ranges::find(dates_, date, &TradeDate::text);
  if (place != end && place->text == date) return place - dates_.begin();
  const auto behind_greater =
      descending_ ? place : std::find_if(dates_.rbegin(), dates_.rend(), is_greater).base();
  if (behind_greater == dates_.begin()) return std::nullopt;
  return behind_greater - dates_.begin() - 1;
}

std::optional<BarTime> TradeDates::at(int64_t index) const {
  if (index < 0 || index >= static_cast<int64_t>(dates_.size())) return std::nullopt;
  const TradeDate& entry = dates_[static_cast<size_t>(index)];
  if (entry.is_read) return entry.date;
  BarTime date;
  if (!read_date(entry.text, date)) return std::nullopt;
  return date;
}

}  // namespace quor
