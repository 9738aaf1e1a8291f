// JSON out of values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quor_npm {

/// Puts one text together; commas come by themselves.
class Json {
 public:
  Json& open(char bracket);
  Json& close(char bracket);
  Json& key(std::string_view name);
  Json& text(std::string_view value);
  /// A NaN or an infinity is null.
  Json& number(double value);
  Json& integer(int64_t value);
  Json& boolean(bool value);
  Json& null();

  std::string take() { return std::move(out_); }

 private:
  Json& put(std::string_view token);

  std::string out_;
  bool wants_comma_ = false;
};

}  // namespace quor_npm
