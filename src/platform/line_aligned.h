// Memory that begins with a line of the cache: what is fetched out of order, or several numbers at
// a time, then comes from as few lines as can be.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace quor {

constexpr size_t line_size = 64;
constexpr std::align_val_t cache_line{line_size};

template <typename T>
struct LineAligned {
  using value_type = T;
  LineAligned() = default;
  template <typename U>
  explicit LineAligned(const LineAligned<U>&) {}
  T* allocate(size_t count) {
    return static_cast<T*>(::operator new(count * sizeof(T), cache_line));
  }
  void deallocate(T* memory, size_t) { ::operator delete(memory, cache_line); }
  bool operator==(const LineAligned&) const = default;
};

struct FreeLines {
  void operator()(double* memory) const { ::operator delete(memory, cache_line); }
};

using LineAlignedNumbers = std::unique_ptr<double[], FreeLines>;

/// Numbers that aren't set.
inline LineAlignedNumbers line_aligned_numbers(size_t count) {
  return LineAlignedNumbers(LineAligned<double>().allocate(count));
}

}  // namespace quor
