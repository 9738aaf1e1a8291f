#include "calendar/trade_day_cache.h"

#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <unordered_map>

#include "callbacks/host_callbacks.h"

namespace quor::trade_day_help {
namespace {

std::shared_mutex map_lock;  ///< guards `_trade_day_map`, never held while the host is called
std::unordered_map<std::string, ModelPointer> _trade_day_map;

void log_in_two_lines(std::string_view operation, std::string_view line, const char* text,
                      uint64_t uuid) {
  log(log_error, std::string(operation) + std::string(line), uuid);
  log(log_error, text, uuid);
}

}  // namespace

std::string cache_key(std::string_view security, std::string_view market) {
  std::string key;
  key.reserve(security.size() + 1 + market.size());
  return key.append(security).append("_").append(market);
}

ModelPointer find_model(const std::string& key) {
  const std::shared_lock guard(map_lock);
  const auto found = _trade_day_map.find(key);
  return found == _trade_day_map.end() ? nullptr : found->second;
}

void store_model(const std::string& key, const ModelPointer& model) {
  const std::unique_lock guard(map_lock);
  _trade_day_map.try_emplace(key, model);
}

void drop_model(const std::string& key) noexcept {
  const std::unique_lock guard(map_lock);
  _trade_day_map.erase(key);
}

void log_exception(std::string_view operation, std::string_view unknown, uint64_t uuid) noexcept {
  try {
    try {
      throw;
    } catch (const std::runtime_error& fault) {
      log_in_two_lines(operation, " runtime error occurs.", fault.what(), uuid);
    } catch (const std::exception& fault) {
      log_in_two_lines(operation, " exception occurs.", fault.what(), uuid);
    } catch (...) {
      log(log_error, std::string(operation) + std::string(unknown), uuid);
    }
  } catch (...) {  // nothing is left to say it with
  }
}

}  // namespace quor::trade_day_help
