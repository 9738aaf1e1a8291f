/* As src/platform/old_glibc.c, what a program needs beyond it. */
#define _GNU_SOURCE
#include <sys/stat.h>

/* NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */

enum { stat_version = 1 };

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

/* The start of a program. Newer C libraries run its constructors by themselves; the older symbol
 * leaves that to a function that it is given. */
typedef int Main(int count, char** arguments, char** environment);
typedef void Step(void);

__asm__(".symver old_start,__libc_start_main@GLIBC_2.2.5");
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
