// What stops the program: a text for the user.
#pragma once

#include "bars/errors.h"

namespace quor_host {

/// A file that can't be read, or one that holds something else.
using HostError = quor_bars::ReadError;

/// A command line that says something impossible.
class UsageError : public HostError {
 public:
  using HostError::HostError;
};

}  // namespace quor_host
