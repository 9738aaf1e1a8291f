// The machine's non-deterministic random device.
#pragma once

#include <cstdint>

namespace quor {

/// 32 random bits; no seed exists and no sequence can be reproduced.
uint32_t random_word();

}  // namespace quor
