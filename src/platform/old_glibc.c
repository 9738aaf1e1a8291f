/* Binds the calls of what is shipped to symbols that glibc has had since 2.28 or longer, so that it
 * loads on older systems than the one it is built on. The linker sends each call NAME to
 * __wrap_NAME, those of the C++ runtime that is linked in, too. */
#define _GNU_SOURCE
#include "old_glibc.h"

#include <pthread.h>

/* The names are the linker's and the C library's.
 * NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */

/* Of the library of threads, before it became a part of the C library. */
QUOR_BIND(old_once, pthread_once, 2.2.5);
QUOR_BIND(old_rdlock, pthread_rwlock_rdlock, 2.2.5);
QUOR_BIND(old_wrlock, pthread_rwlock_wrlock, 2.2.5);
QUOR_BIND(old_unlock, pthread_rwlock_unlock, 2.2.5);
int old_once(pthread_once_t* once, void (*routine)(void));
int old_rdlock(pthread_rwlock_t* lock);
int old_wrlock(pthread_rwlock_t* lock);
int old_unlock(pthread_rwlock_t* lock);
int __wrap_pthread_once(pthread_once_t* once, void (*routine)(void));
int __wrap_pthread_rwlock_rdlock(pthread_rwlock_t* lock);
int __wrap_pthread_rwlock_wrlock(pthread_rwlock_t* lock);
int __wrap_pthread_rwlock_unlock(pthread_rwlock_t* lock);

int __wrap_pthread_once(pthread_once_t* once, void (*routine)(void)) {
  return old_once(once, routine);
}
int __wrap_pthread_rwlock_rdlock(pthread_rwlock_t* lock) { return old_rdlock(lock); }
int __wrap_pthread_rwlock_wrlock(pthread_rwlock_t* lock) { return old_wrlock(lock); }
int __wrap_pthread_rwlock_unlock(pthread_rwlock_t* lock) { return old_unlock(lock); }

/* Whether the process has one thread only, which lets shared pointers count without a lock. Only
 * newer C libraries know; no is right everywhere. */
__attribute__((visibility("hidden"))) char __libc_single_threaded = 0;

/* NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */
