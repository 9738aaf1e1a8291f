// JSON as the studio reads and writes it.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace quor_host {

using Json = nlohmann::ordered_json;

/// The text; bytes that are no UTF-8 are replaced, and a number that isn't finite is null.
std::string json_text(const Json& json);

/// An object out of a request's body. Throws Refusal for anything else.
Json json_object_of(std::string_view text);

/// Members of an object. Each throws Refusal for a value of another kind; text_of for a missing
/// one, too.
std::string text_of(const Json& object, const char* key);
std::string text_of(const Json& object, const char* key, const std::string& absent);
bool flag_of(const Json& object, const char* key);
std::optional<double> number_of(const Json& object, const char* key);
/// From `least` to `most`.
size_t count_of(const Json& object, const char* key, size_t absent, size_t least, size_t most);

}  // namespace quor_host
