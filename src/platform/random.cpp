#include "platform/random.h"

#include <random>

namespace quor {

uint32_t random_word() {
  thread_local std::random_device device;
  return device();
}

}  // namespace quor
