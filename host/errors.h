// What stops the program: a text for the user.
#pragma once

#include <stdexcept>

namespace quor_host {

class HostError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quor_host
