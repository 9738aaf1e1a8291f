#include "platform/clock.h"

#include <chrono>
#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <ctime>
#endif

namespace quor {

// One clock for all: `std::time` may lag behind it by some milliseconds, and so by a second.

int64_t unix_time() {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(since_epoch).count();
}

#ifdef _WIN32
// Not the C library's local time, which goes by an environment variable and by rules of its own.
LocalTime local_time() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}
#elif defined(__wasi__)
// Zones are unknown to this system, so that the host of the module tells its own.
namespace {
std::time_t seconds_east = 0;
}  // namespace

LocalTime local_time() {
  const std::time_t now = unix_time() + seconds_east;
  std::tm parts{};
  if (gmtime_r(&now, &parts) == nullptr) return {};
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
          parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

extern "C" __attribute__((export_name("quor_set_zone"))) void quor_set_zone(int32_t seconds);
extern "C" void quor_set_zone(int32_t seconds) { seconds_east = seconds; }
#else
LocalTime local_time() {
  const std::time_t now = unix_time();
  std::tm parts{};
  if (localtime_r(&now, &parts) == nullptr) return {};
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
          parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}
#endif

}  // namespace quor
