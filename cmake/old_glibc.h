/* How a call is bound to an older symbol of glibc. Each processor's symbols are of an age of their own. */
#pragma once

/* The function `name` is the `symbol` of that `version`; on ARM of the first that there is. */
#ifdef __aarch64__
#define QUOR_BIND(name, symbol, version) __asm__(".symver " #name "," #symbol "@GLIBC_2.17")
#else
#define QUOR_BIND(name, symbol, version) __asm__(".symver " #name "," #symbol "@GLIBC_" #version)
#endif
