// What stops the program: a text for the user.
#pragma once

#include "bars/errors.h"

namespace quor_host {

/// Wrong options stop it as files do that can't be read.
using HostError = quor_bars::ReadError;

}  // namespace quor_host
