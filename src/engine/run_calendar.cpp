#include "engine/run_calendar.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <unordered_map>

#include "calendar/trade_day_cache.h"
#include "calendar/trade_day_help.h"
#include "callbacks/host_callbacks.h"
#include "engine/values.h"

namespace quor::engine {
namespace {

thread_local const std::string* current = nullptr;

const char* answer(const char* /*market*/, const char* /*security*/, const char* /*start*/,
                   const char* /*end*/, int32_t* /*length*/) {
  return current == nullptr ? nullptr : current->c_str();
}

/// What the process holds under a key, told apart by size and hash: a market has one long text for
/// thousands of securities.
struct Held {
  size_t size = 0;
  size_t hash = 0;
  size_t runs = 0;  ///< that are under way
};

std::mutex lock;  ///< guards `held`
std::condition_variable run_has_ended;
std::unordered_map<std::string, Held> held;

/// Takes part in what a key holds; other texts have to end before.
void hold(const std::string& key, const std::string& calendar) {
  const size_t hash = std::hash<std::string>()(calendar);
  std::unique_lock guard(lock);
  const auto is_same = [&](const Held& now) {
    return now.size == calendar.size() && now.hash == hash;
  };
  Held& now = held[key];
  run_has_ended.wait(guard, [&] { return now.runs == 0 || is_same(now); });
  if (!is_same(now)) {
    trade_day_help::drop_model(key);
    now.size = calendar.size();
    now.hash = hash;
  }
  ++now.runs;
}

void release(const std::string& key) {
  {
    const std::lock_guard guard(lock);
    --held[key].runs;
  }
  run_has_ended.notify_all();
}

bool is_known(const std::string& key) {
  const std::lock_guard guard(lock);
  return held.contains(key);
}

}  // namespace

CalendarOfThisThread::CalendarOfThisThread(const std::string& security, const std::string& market,
                                           const std::string& calendar) {
  static std::once_flag handler_is_set;
  std::call_once(handler_is_set, [] { set_trade_dates_handler(answer); });
  if (security.empty() || market.empty()) return;
  const std::string key = trade_day_help::cache_key(security, market);
  if (calendar.empty() && !is_known(key)) return;
  hold(key, calendar);
  key_ = key;
  current = &calendar;
  if (calendar.empty()) return;
  trade_day_help::init_security_trade_day_model(security, market, {}, {}, 0);
  if (trade_day_help::find_model(key) != nullptr) return;
  current = nullptr;
  release(key);
  throw Misuse("the calendar can't be read; see the guide for hosts on its form");
}

CalendarOfThisThread::~CalendarOfThisThread() {
  current = nullptr;
  if (!key_.empty()) release(key_);
}

}  // namespace quor::engine
