/* As src/platform/old_glibc.c, what a module of Python needs beyond a program: values of threads.
 */
#define _GNU_SOURCE
#include <pthread.h>

#include "old_glibc.h"

/* NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */

QUOR_BIND(old_key_create, pthread_key_create, 2.2.5);
QUOR_BIND(old_key_delete, pthread_key_delete, 2.2.5);
QUOR_BIND(old_getspecific, pthread_getspecific, 2.2.5);
QUOR_BIND(old_setspecific, pthread_setspecific, 2.2.5);
int old_key_create(pthread_key_t* key, void (*destroy)(void*));
int old_key_delete(pthread_key_t key);
void* old_getspecific(pthread_key_t key);
int old_setspecific(pthread_key_t key, const void* value);
int __wrap_pthread_key_create(pthread_key_t* key, void (*destroy)(void*));
int __wrap_pthread_key_delete(pthread_key_t key);
void* __wrap_pthread_getspecific(pthread_key_t key);
int __wrap_pthread_setspecific(pthread_key_t key, const void* value);

int __wrap_pthread_key_create(pthread_key_t* key, void (*destroy)(void*)) {
  return old_key_create(key, destroy);
}
int __wrap_pthread_key_delete(pthread_key_t key) { return old_key_delete(key); }
void* __wrap_pthread_getspecific(pthread_key_t key) { return old_getspecific(key); }
int __wrap_pthread_setspecific(pthread_key_t key, const void* value) {
  return old_setspecific(key, value);
}

/* NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */
