#include "callbacks/host_callbacks.h"

#include <atomic>
#include <mutex>

namespace quor {
namespace {

/// The log handler and its level, which must be seen as one.
struct LogSlot {
  LogHandler handler = nullptr;
  uint8_t minimum_level = log_error;
};

std::mutex log_lock;  ///< guards `log_slot`
LogSlot log_slot;
std::atomic<bool> log_is_set{false};
std::atomic<NoticeHandler> notice_slot{nullptr};
std::atomic<TradeHandler> trade_slot{nullptr};
std::atomic<TradeDatesHandler> trade_dates_slot{nullptr};

LogSlot current_log() {
  if (!log_is_set.load(std::memory_order_acquire)) return {};
  const std::lock_guard guard(log_lock);
  return log_slot;
}

}  // namespace

void set_log_handler(LogHandler handler, uint8_t minimum_level) {
  if (handler == nullptr) return;
  const std::lock_guard guard(log_lock);
  log_slot = {handler, minimum_level};
  log_is_set.store(true, std::memory_order_release);
}

void set_notice_handler(NoticeHandler handler) {
  if (handler != nullptr) notice_slot = handler;
}

void set_trade_handler(TradeHandler handler) {
  if (handler == nullptr) {
    log(log_error, "set_trade_callback callback is nullptr", 0);
    return;
  }
  trade_slot = handler;
}

void set_trade_dates_handler(TradeDatesHandler handler) {
  if (handler == nullptr) {
    log(log_error, "set_get_trade_dates_callback callback is nullptr", 0);
    return;
  }
  trade_dates_slot = handler;
}

bool is_logged(uint8_t level) {
  const LogSlot slot = current_log();
  return slot.handler != nullptr && level >= slot.minimum_level;
}

void log(uint8_t level, const std::string& text, uint64_t uuid) {
  const LogSlot slot = current_log();
  if (slot.handler != nullptr && level >= slot.minimum_level) {
    slot.handler(level, text.c_str(), uuid);
  }
}

NoticeHandler notice_handler() { return notice_slot; }
TradeHandler trade_handler() { return trade_slot; }

std::string ask_trade_dates(const std::string& market, const std::string& security,
                            const std::string& start_date, const std::string& end_date) {
  const TradeDatesHandler handler = trade_dates_slot;
  if (handler == nullptr) return {};
  int32_t length = 0;
  const char* text =
      handler(market.c_str(), security.c_str(), start_date.c_str(), end_date.c_str(), &length);
  return text == nullptr ? std::string() : std::string(text);
}

}  // namespace quor
