// The operators stand in a unit of their own: where a compiler sees through them, it takes the pair
// of new and free for a mistake.
#include "support/counting_new.h"

#include <atomic>
#include <cstdlib>
#include <new>

extern "C" void* __real_malloc(std::size_t size);

namespace {

using quor_test::Exhaustion;

std::atomic<long> allocations{0};
std::atomic<long> live{0};

// Not by thread: where threads' variables are emulated, their first use takes memory itself.
struct Limit {
  bool active = false;
  bool refused = false;
  Exhaustion exhaustion = Exhaustion::of_one;
  long left = 0;
};
Limit limit;

bool is_refused() {
  if (!limit.active || limit.left-- > 0) return false;
  if (limit.exhaustion == Exhaustion::of_one) limit.active = false;
  limit.refused = true;
  return true;
}

void* take(std::size_t size) noexcept {
  ++allocations;
  if (is_refused()) return nullptr;
  void* memory = __real_malloc(size == 0 ? 1 : size);
  if (memory != nullptr) ++live;
  return memory;
}

void give_back(void* memory) noexcept {
  if (memory != nullptr) --live;
  std::free(memory);
}

}  // namespace

/// Stands for malloc in what is linked into the test program.
extern "C" void* __wrap_malloc(std::size_t size) {
  return is_refused() ? nullptr : __real_malloc(size);
}

namespace quor_test {

long allocation_count() { return allocations; }
long live_allocations() { return live; }

void fail_allocations(long count, Exhaustion exhaustion) {
  limit = {true, false, exhaustion, count};
}

bool stop_failing() {
  limit.active = false;
  return limit.refused;
}

}  // namespace quor_test

void* operator new(std::size_t size) {
  if (void* memory = take(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void operator delete(void* memory) noexcept { give_back(memory); }
void operator delete(void* memory, std::size_t) noexcept { give_back(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { give_back(memory); }
void operator delete[](void* memory) noexcept { give_back(memory); }
void operator delete[](void* memory, std::size_t) noexcept { give_back(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { give_back(memory); }
