// Trading calendars of the runs of a process: each run sees the one that its script was given.
#pragma once

#include <memory>
#include <string>

namespace quor::engine {

/// For its life, the process has this calendar under the security and the market, and questions on
/// this thread are answered with it; another calendar for the same two waits until it is gone.
/// Nothing is done for a security or a market without a name and for an empty calendar that nobody
/// replaced. Throws Misuse for a text that is no calendar.
class CalendarOfThisThread {
 public:
  CalendarOfThisThread(const std::string& security, const std::string& market,
                       const std::string& calendar);
  ~CalendarOfThisThread();
  CalendarOfThisThread(const CalendarOfThisThread&) = delete;
  CalendarOfThisThread& operator=(const CalendarOfThisThread&) = delete;

 private:
  std::string key_;  ///< empty if nothing is held
};

}  // namespace quor::engine
