// Counts what the test program takes from the heap, and lets memory run out.
#pragma once

namespace quor_test {

/// How often memory was taken by new since the program began.
long allocation_count();

/// How many pieces of memory that new gave are in use.
long live_allocations();

enum class Exhaustion { of_one, from_there_on };

/// Lets the program, which has one thread then, take `count` more pieces of memory, by new or by
/// the library's own malloc; then the next one fails, or all further ones do.
void fail_allocations(long count, Exhaustion exhaustion);

/// Memory is there again. Tells whether any was refused.
bool stop_failing();

}  // namespace quor_test
