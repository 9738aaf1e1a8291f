#include "platform/random.h"

#ifdef _WIN32
#include <random>
#else
#include <unistd.h>

#include <cerrno>
#include <system_error>
#endif

namespace quor {

#ifdef _WIN32

uint32_t random_word() {
  thread_local std::random_device device;
  return device();
}

#else

// The device of the standard library would need a newer C library.
uint32_t random_word() {
  uint32_t word = 0;
  if (getentropy(&word, sizeof word) != 0) {
    throw std::system_error(errno, std::generic_category(), "random device");
  }
  return word;
}

#endif

}  // namespace quor
