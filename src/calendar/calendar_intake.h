// From the host's calendar JSON to a model.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "calendar/trade_day_model.h"

namespace quor {

/// What became of a text: a model, or why there is none. A reason may be empty.
struct CalendarAnswer {
  std::shared_ptr<const TradeDayModel> model;
  std::string_view refusal;
};

/// Reads the whole text. Throws for a value of a wrong type, for a missing key that is no refusal,
/// and for dates and times without digits.
CalendarAnswer read_calendar(const std::string& json);

}  // namespace quor
