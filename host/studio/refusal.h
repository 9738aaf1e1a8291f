// What a request is refused with.
#pragma once

#include <stdexcept>
#include <string>

namespace quor_host {

/// A status of HTTP and one sentence.
class Refusal : public std::runtime_error {
 public:
  Refusal(int code, const std::string& sentence) : std::runtime_error(sentence), status(code) {}

  int status;
};

}  // namespace quor_host
