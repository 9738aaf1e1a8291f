// What the processor at hand can do beyond the least that the library is built for.
#pragma once

#if defined(__x86_64__) && !defined(__clang__)
/// For a function that runs only where `is_wide`: everything that it calls is compiled into it for
/// such processors.
#define QUOR_WIDE [[gnu::target("avx2,fma"), gnu::flatten]]
#else
#define QUOR_WIDE
#endif

/// Before a loop no row of which reads what an earlier one has written, though both may stand in
/// the same memory.
#if defined(__clang__)
#define QUOR_ROWS_APART _Pragma("clang loop vectorize(assume_safety)")
#else
#define QUOR_ROWS_APART _Pragma("GCC ivdep")
#endif

namespace quor {

/// Whether a product and a sum can have one rounding; on x86-64 four doubles are taken at once
/// then, too.
#if defined(__x86_64__) && !defined(__clang__)
inline bool is_wide() {
  static const bool is = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return is;
}
#elif defined(__aarch64__)
constexpr bool is_wide() { return true; }
#else
constexpr bool is_wide() { return false; }
#endif

template <typename Loops>
QUOR_WIDE void run_wide(const Loops& loops) {
  loops();
}

/// Runs loops over rows as the processor takes most at once.
template <typename Loops>
void wherever_wide(const Loops& loops) {
  is_wide() ? run_wide(loops) : loops();
}

}  // namespace quor
