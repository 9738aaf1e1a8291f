#include "memory.h"

#include <cstdlib>  // says whose library it is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace quor_host {

void give_back_large_blocks() {
#ifdef __GLIBC__
  constexpr int large = 256 * 1024;
  mallopt(M_MMAP_THRESHOLD, large);
#endif
}

}  // namespace quor_host
