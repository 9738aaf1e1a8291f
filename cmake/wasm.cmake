# Cross build to WebAssembly by Debian's clang, against the C library of WASI and a runtime of C++ that
# tools/wasm-runtime.sh builds: Debian's own knows no exceptions.
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/wasm)
set(CMAKE_SYSTEM_NAME WASI)
set(CMAKE_SYSTEM_PROCESSOR wasm32)

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_AR /usr/bin/llvm-ar-19)
set(CMAKE_RANLIB /usr/bin/llvm-ranlib-19)
set(CMAKE_NM /usr/bin/llvm-nm-19)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(runtime ${CMAKE_CURRENT_LIST_DIR}/../build/libraries/wasm-runtime)
set(CMAKE_C_FLAGS_INIT "-fwasm-exceptions -msimd128")
set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions -msimd128 -isystem ${CMAKE_CURRENT_LIST_DIR}/wasm \
-nostdinc++ -isystem ${runtime}/include/c++/v1")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fwasm-exceptions -nostdlib++ -L${runtime}/lib")
set(CMAKE_CXX_STANDARD_LIBRARIES "-lc++ -lc++abi -lunwind -lwasi-emulated-getpid")

set(CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../build/libraries/wasi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR node --no-warnings ${CMAKE_CURRENT_LIST_DIR}/../tools/wasi.mjs)
