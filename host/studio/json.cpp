#include "json.h"

#include <cmath>

#include "refusal.h"

namespace quor_host {
namespace {

/// The member, or null if it isn't there or holds a null.
const Json* member(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

[[noreturn]] void refuse(const char* key, const std::string& wanted) {
  throw Refusal(400, '"' + std::string(key) + "\" must be " + wanted);
}

}  // namespace

std::string json_text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json json_object_of(std::string_view text) {
  Json json = Json::parse(text, nullptr, false);
  if (!json.is_object()) throw Refusal(400, "the body is no JSON object");
  return json;
}

std::string text_of(const Json& object, const char* key) {
  const Json* const value = member(object, key);
  if (value == nullptr || !value->is_string()) refuse(key, "a text");
  return value->get<std::string>();
}

std::string text_of(const Json& object, const char* key, const std::string& absent) {
  return member(object, key) == nullptr ? absent : text_of(object, key);
}

bool flag_of(const Json& object, const char* key) {
  const Json* const value = member(object, key);
  if (value != nullptr && !value->is_boolean()) refuse(key, "true or false");
  return value != nullptr && value->get<bool>();
}

std::optional<double> number_of(const Json& object, const char* key) {
  const Json* const value = member(object, key);
  if (value == nullptr) return std::nullopt;
  if (!value->is_number()) refuse(key, "a number");
  return value->get<double>();
}

size_t count_of(const Json& object, const char* key, size_t absent, size_t least, size_t most) {
  const auto value = number_of(object, key);
  if (!value) return absent;
  if (*value != std::floor(*value) || *value < static_cast<double>(least) ||
      *value > static_cast<double>(most)) {
    refuse(key, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return static_cast<size_t>(*value);
}

}  // namespace quor_host
