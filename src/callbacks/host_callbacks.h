// The only way out of the library: the host's process-wide handlers and the types of all six.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quor {

using LogHandler = void (*)(uint8_t level, const char* text, uint64_t uuid);
using NoticeHandler = void (*)(int64_t time, uint32_t column_id, uint64_t uuid, const char* text);
using TradeHandler = void (*)(int64_t time, int64_t bar, uint32_t row, uint64_t uuid,
                              uint32_t column_id, uint32_t action, int64_t quantity);
using TradeDatesHandler = const char* (*)(const char* market, const char* security,
                                          const char* start_date, const char* end_date,
                                          int32_t* length);
using ExtraDataCallback = double (*)(const char* key, const char* market, const char* security);
using TradeTimeCallback = int32_t (*)(int64_t time, const char* market, const char* security);

/// Hears the notices and trade signals of one instance in place of the process's handlers.
class EventListener {
 public:
  virtual void hear_notice(uint32_t row, uint32_t column_id) = 0;
  virtual void hear_signal(int64_t bar, uint32_t row, uint32_t column_id, uint32_t action,
                           int64_t quantity) = 0;

 protected:
  ~EventListener() = default;
};

enum LogLevel : uint8_t { log_mapping = 0, log_calendar = 1, log_error = 2, log_unknown = 3 };

/// Null changes nothing. Handler and level change together.
void set_log_handler(LogHandler handler, uint8_t minimum_level);
void set_notice_handler(NoticeHandler handler);
/// Null is logged and keeps the slot.
void set_trade_handler(TradeHandler handler);
void set_trade_dates_handler(TradeDatesHandler handler);

/// Whether a line of the level reaches a handler; spares the building of texts nobody reads.
bool is_logged(uint8_t level);
void log(uint8_t level, const std::string& text, uint64_t uuid);

/// Null until the host sets them.
NoticeHandler notice_handler();
TradeHandler trade_handler();

/// Asks the host for a calendar; empty without a handler or an answer.
std::string ask_trade_dates(const std::string& market, const std::string& security,
                            const std::string& start_date, const std::string& end_date);

}  // namespace quor
