# Cross build for 64-bit Windows. The runtime of the compiler is linked in, so that what is built
# needs no other DLL than those of the system.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)
# The stack is aligned to 16 bytes there, and the compiler takes four doubles on it for aligned to 32.
set(CMAKE_CXX_FLAGS_INIT -Wa,-muse-unaligned-vector-move)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)

# Libraries come from where tools/libraries.sh puts them, never from this machine's own.
set(CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../build/libraries/windows /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_CURRENT_LIST_DIR}/../build/libraries/windows/lib/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine.sh)
