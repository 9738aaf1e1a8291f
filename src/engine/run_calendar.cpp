#include "engine/run_calendar.h"

#include <mutex>

#include "callbacks/host_callbacks.h"

namespace quor::engine {
namespace {

thread_local const std::string* current = nullptr;

const char* answer(const char* /*market*/, const char* /*security*/, const char* /*start*/,
                   const char* /*end*/, int32_t* /*length*/) {
  return current == nullptr ? nullptr : current->c_str();
}

}  // namespace

CalendarOfThisThread::CalendarOfThisThread(const std::string& calendar) {
  static std::once_flag handler_is_set;
  std::call_once(handler_is_set, [] { set_trade_dates_handler(answer); });
  current = &calendar;
}

CalendarOfThisThread::~CalendarOfThisThread() { current = nullptr; }

}  // namespace quor::engine
