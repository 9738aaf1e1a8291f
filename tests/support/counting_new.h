// Counts what the test program takes from the heap by new.
#pragma once

namespace quor_test {

/// How often memory was taken since the program began.
long allocation_count();

}  // namespace quor_test
