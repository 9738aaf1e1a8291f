// What keeps a text from being read: a sentence for the user.
#pragma once

#include <stdexcept>

namespace quor_bars {

class ReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quor_bars
