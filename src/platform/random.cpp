#include "platform/random.h"

#ifdef _WIN32
#define _CRT_RAND_S  // which the next header wants for rand_s
#include <cstdlib>
#else
#include <unistd.h>
#endif

#include <cerrno>
#include <system_error>

namespace quor {

#ifdef _WIN32

// The device of the standard library would leave something to be destroyed at a thread's end.
uint32_t random_word() {
  unsigned int word = 0;
  if (rand_s(&word) != 0) {
    throw std::system_error(errno, std::generic_category(), "random device");
  }
  return word;
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
