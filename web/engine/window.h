// The part of the columns that a page has in sight, thinned.
#pragma once

#include <string>

#include "desk.h"

namespace quor_host {

struct Window {
  size_t from = 0;
  size_t to = 0;  ///< behind the last row
  size_t points = 2000;
};

/// A length of 32 bits, a header in JSON of that length, and arrays of doubles, all with the lowest
/// byte first. Rows go by buckets where there are more of them than points.
std::string window_bytes(const Desk& desk, Window window);

}  // namespace quor_host
