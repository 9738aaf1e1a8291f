#include "web.h"

#include <charconv>

namespace quor_host {

std::string Request::text(const std::string& key) const {
  const auto found = query.find(key);
  return found == query.end() ? std::string() : found->second;
}

size_t Request::number(const std::string& key, size_t absent) const {
  const std::string digits = text(key);
  if (digits.empty()) return absent;
  size_t value = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || stop != digits.data() + digits.size()) {
    throw Refusal(400, '"' + key + "\" must be a whole number");
  }
  return value;
}

Json Request::json() const {
  if (type != "application/json") throw Refusal(415, "the body must be application/json");
  return json_object_of(body);
}

Answer json_answer(const Json& json, int status) {
  return {status, "application/json", json_text(json)};
}

Answer error_answer(int status, const std::string& sentence) {
  return json_answer({{"error", sentence}}, status);
}

std::vector<std::string> pieces_of(const std::string& path) {
  std::vector<std::string> pieces;
  for (size_t begin = path.find('/'); begin != std::string::npos;) {
    const size_t end = path.find('/', begin + 1);
    pieces.push_back(path.substr(begin + 1, end == std::string::npos ? end : end - begin - 1));
    begin = end;
  }
  return pieces;
}

}  // namespace quor_host
