#include "platform/clock.h"

#include <chrono>
#include <ctime>

namespace quor {

int64_t unix_time() {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(since_epoch).count();
}

LocalTime local_time() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
#ifdef _WIN32
  if (localtime_s(&parts, &now) != 0) return {};
#else
  if (localtime_r(&now, &parts) == nullptr) return {};
#endif
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
          parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

}  // namespace quor
