// The calendars of the process, and how the two operations on them report an exception.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "calendar/trade_day_model.h"

namespace quor::trade_day_help {

using ModelPointer = std::shared_ptr<const TradeDayModel>;

std::string cache_key(std::string_view security, std::string_view market);

/// Null if there is none.
ModelPointer find_model(const std::string& key);
/// Keeps a model that is there already, also one without trade dates.
void store_model(const std::string& key, const ModelPointer& model);
void drop_model(const std::string& key) noexcept;

/// To be called while an exception is being handled: logs its kind and its text behind the
/// operation's name in brackets. `unknown` is the line for what is no standard exception. Keeps
/// quiet if there is no memory left for the lines.
void log_exception(std::string_view operation, std::string_view unknown, uint64_t uuid) noexcept;

}  // namespace quor::trade_day_help
