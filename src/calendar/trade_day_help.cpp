#include "calendar/trade_day_help.h"

#include "calendar/calendar_intake.h"
#include "calendar/trade_day_cache.h"
#include "callbacks/host_callbacks.h"

namespace quor::trade_day_help {
namespace {

void refuse(std::string_view reason, uint64_t uuid) {
  if (reason.empty() || !is_logged(log_calendar)) return;
  log(log_calendar, "[trade_day_help::init_security_trade_day_model] " + std::string(reason), uuid);
}

void init(const std::string& security, const std::string& market, const std::string& start_date,
          const std::string& end_date, uint64_t uuid) {
  if (security.empty() || market.empty()) {
    refuse("security or market str is empty.", uuid);
    return;
  }
  const std::string key = cache_key(security, market);
  const ModelPointer known = find_model(key);
  if (known != nullptr && !known->trade_dates.empty()) {
    refuse("current _trade_day_map cache contains key, return.", uuid);
    return;
  }
  CalendarAnswer answer = read_calendar(ask_trade_dates(market, security, start_date, end_date));
  if (answer.model == nullptr) {
    refuse(answer.refusal, uuid);
    return;
  }
  store_model(key, answer.model);
}

}  // namespace

void init_security_trade_day_model(const std::string& security, const std::string& market,
                                   const std::string& start_date, const std::string& end_date,
                                   uint64_t uuid) {
  try {
    init(security, market, start_date, end_date, uuid);
  } catch (...) {
    log_exception("[init_security_trade_day_model]", " unknown exception occurs in catch ... .",
                  uuid);
  }
}

}  // namespace quor::trade_day_help
