/* Binds the calls of what is shipped to symbols that glibc has had since 2.28 or longer, so that it
 * loads on older systems than the one it is built on. The linker sends each call NAME to
 * __wrap_NAME, those of the C++ runtime that is linked in, too. */
#define _GNU_SOURCE
#include <pthread.h>

/* The names are the linker's and the C library's.
 * NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */

/* These give what the newest versions give, to the last bit and to the sign of a NaN. The older
 * symbols of the plain names give another NaN for a fault. */
__asm__(".symver old_exp,__exp_finite@GLIBC_2.15");
__asm__(".symver old_log,__log_finite@GLIBC_2.15");
__asm__(".symver old_pow,__pow_finite@GLIBC_2.15");
double old_exp(double x);
double old_log(double x);
double old_pow(double base, double exponent);
double __wrap_exp(double x);
double __wrap_log(double x);
double __wrap_pow(double base, double exponent);

double __wrap_exp(double x) { return old_exp(x); }
double __wrap_log(double x) { return old_log(x); }
double __wrap_pow(double base, double exponent) { return old_pow(base, exponent); }

/* Of the library of threads, before it became a part of the C library. */
__asm__(".symver old_once,pthread_once@GLIBC_2.2.5");
__asm__(".symver old_rdlock,pthread_rwlock_rdlock@GLIBC_2.2.5");
__asm__(".symver old_wrlock,pthread_rwlock_wrlock@GLIBC_2.2.5");
__asm__(".symver old_unlock,pthread_rwlock_unlock@GLIBC_2.2.5");
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
