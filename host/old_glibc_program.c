/* As src/platform/old_glibc.c, what a program needs beyond it. */
#define _GNU_SOURCE
#include <errno.h>
#include <pthread.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <time.h>

#include "old_glibc.h"

/* NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */

#ifdef __aarch64__
enum { stat_version = 0 };
#else
enum { stat_version = 1 };
#endif

int __xstat(int version, const char* path, struct stat* status);
int __lxstat(int version, const char* path, struct stat* status);
int __fxstat64(int version, int file, struct stat64* status);
int __wrap_stat(const char* path, struct stat* status);
int __wrap_lstat(const char* path, struct stat* status);
int __wrap_fstat64(int file, struct stat64* status);

int __wrap_stat(const char* path, struct stat* status) {
  return __xstat(stat_version, path, status);
}
int __wrap_lstat(const char* path, struct stat* status) {
  return __lxstat(stat_version, path, status);
}
int __wrap_fstat64(int file, struct stat64* status) {
  return __fxstat64(stat_version, file, status);
}

/* What the runtime of C++ draws random numbers by. */
uint32_t __wrap_arc4random(void);
uint32_t __wrap_arc4random(void) {
  uint32_t bits = 0;
  if (getrandom(&bits, sizeof bits, 0) != (ssize_t)sizeof bits) abort();
  return bits;
}

/* Threads, as in src/platform/old_glibc.c. */
QUOR_BIND(old_create, pthread_create, 2.2.5);
QUOR_BIND(old_join, pthread_join, 2.2.5);
QUOR_BIND(old_timedwait, pthread_cond_timedwait, 2.3.2);
int old_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
               void* argument);
int old_join(pthread_t thread, void** result);
int old_timedwait(pthread_cond_t* condition, pthread_mutex_t* lock, const struct timespec* until);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);
int __wrap_pthread_join(pthread_t thread, void** result);
int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* lock, clockid_t clock,
                                  const struct timespec* until);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument) {
  return old_create(thread, attributes, routine, argument);
}
int __wrap_pthread_join(pthread_t thread, void** result) { return old_join(thread, result); }

enum { nanoseconds = 1000000000 };

/* Older systems wait by the wall clock only, so the time that is left is told by that one. */
int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* lock, clockid_t clock,
                                  const struct timespec* until) {
  struct timespec now;
  struct timespec end;
  if (clock_gettime(clock, &now) != 0 || clock_gettime(CLOCK_REALTIME, &end) != 0) return EINVAL;
  end.tv_sec += until->tv_sec - now.tv_sec;
  end.tv_nsec += until->tv_nsec - now.tv_nsec;
  while (end.tv_nsec < 0) end.tv_nsec += nanoseconds, --end.tv_sec;
  while (end.tv_nsec >= nanoseconds) end.tv_nsec -= nanoseconds, ++end.tv_sec;
  return old_timedwait(condition, lock, &end);
}

/* What charts scale their axes and mix their colours by. */
QUOR_BIND(old_pow, __pow_finite, 2.15);
double old_pow(double base, double exponent);
double __wrap_pow(double base, double exponent);

double __wrap_pow(double base, double exponent) { return old_pow(base, exponent); }

/* The start of a program. Newer C libraries run its constructors by themselves; the older symbol
 * leaves that to a function that it is given. */
typedef int Main(int count, char** arguments, char** environment);
typedef void Step(void);

QUOR_BIND(old_start, __libc_start_main, 2.2.5);
int old_start(Main* program, int count, char** arguments, Main* construct, Step* destruct,
              Step* finish, void* stack_end);
int __wrap___libc_start_main(Main* program, int count, char** arguments, Main* construct,
                             Step* destruct, Step* finish, void* stack_end);

extern Main* const __init_array_start[];
extern Main* const __init_array_end[];

static int construct_all(int count, char** arguments, char** environment) {
  for (Main* const* step = __init_array_start; step != __init_array_end; ++step) {
    (*step)(count, arguments, environment);
  }
  return 0;
}

int __wrap___libc_start_main(Main* program, int count, char** arguments, Main* construct,
                             Step* destruct, Step* finish, void* stack_end) {
  (void)construct;
  return old_start(program, count, arguments, construct_all, destruct, finish, stack_end);
}

/* NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */
