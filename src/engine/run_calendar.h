// Answers the library's question for a trading calendar from what a script was given.
#pragma once

#include <string>

namespace quor::engine {

/// For its life, questions on this thread are answered with the calendar's JSON.
class CalendarOfThisThread {
 public:
  explicit CalendarOfThisThread(const std::string& calendar);
  ~CalendarOfThisThread();
  CalendarOfThisThread(const CalendarOfThisThread&) = delete;
  CalendarOfThisThread& operator=(const CalendarOfThisThread&) = delete;
};

}  // namespace quor::engine
