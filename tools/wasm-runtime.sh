#!/bin/sh
# Builds the runtime of C++ for WebAssembly, with exceptions, from Debian's sources of LLVM, into
# build/libraries/wasm-runtime. Does nothing if it is there.
set -u
. "$(dirname "$0")/lib.sh"
. tools/sources.sh

out=$root/build/libraries/wasm-runtime
work=$root/build/libraries/sources-wasm-runtime

# The source of LLVM is large, and little of it is needed.
fetch_parts() {
  mkdir -p "$work/fetched" "$work/llvm"
  (cd "$work/fetched" && private_apt source --download-only llvm-toolchain-19 >/dev/null) &&
    tar -C "$work/llvm" --strip-components=1 -xJf "$work/fetched"/llvm-toolchain-19_*.orig.tar.xz \
      --exclude '*/test' --wildcards --no-wildcards-match-slash '*/libunwind' '*/libcxxabi' \
      '*/libcxx' '*/runtimes' '*/cmake' '*/llvm/cmake' '*/llvm/utils/llvm-lit'
}

build_runtime() {
  cmake -G Ninja -S "$work/llvm/runtimes" -B "$work/build" --toolchain "$root/cmake/wasm.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$out" \
    -DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCMAKE_C_FLAGS="-fwasm-exceptions -fdeclspec" \
    -DCMAKE_CXX_FLAGS="-fwasm-exceptions -isystem $root/cmake/wasm" \
    -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" -DUNIX=1 \
    "-DLLVM_ENABLE_RUNTIMES=libunwind;libcxxabi;libcxx" -DLLVM_DEFAULT_TARGET_TRIPLE=wasm32-wasi \
    -DLIBCXX_ENABLE_THREADS=ON -DLIBCXX_HAS_EXTERNAL_THREAD_API=ON \
    -DLIBCXXABI_ENABLE_THREADS=ON -DLIBCXXABI_HAS_EXTERNAL_THREAD_API=ON \
    -DLIBUNWIND_ENABLE_THREADS=OFF \
    -DLIBCXX_ENABLE_SHARED=OFF -DLIBCXXABI_ENABLE_SHARED=OFF -DLIBUNWIND_ENABLE_SHARED=OFF \
    -DLIBCXX_ENABLE_FILESYSTEM=OFF -DLIBCXX_CXX_ABI=libcxxabi -DLIBCXX_HAS_MUSL_LIBC=ON \
    -DLIBCXXABI_USE_LLVM_UNWINDER=ON -DLIBCXX_USE_COMPILER_RT=ON -DLIBCXXABI_USE_COMPILER_RT=ON \
    -DLIBUNWIND_USE_COMPILER_RT=ON -DLIBCXX_INSTALL_MODULES=OFF \
    -DLIBCXX_ENABLE_ABI_LINKER_SCRIPT=OFF -DLIBCXX_INCLUDE_TESTS=OFF \
    -DLIBCXX_INCLUDE_BENCHMARKS=OFF -DLIBCXXABI_INCLUDE_TESTS=OFF -DLIBUNWIND_INCLUDE_TESTS=OFF &&
    cmake --build "$work/build" && cmake --install "$work/build"
}

# What raises exceptions here is left out of the archive for all but one C library, and what walks
# the registers of other processors isn't.
add_unwinder() {
  unwind=$work/llvm/libunwind
  clang-19 --target=wasm32-wasi -O2 -fwasm-exceptions -fdeclspec -DNDEBUG \
    -I "$unwind/include" -I "$unwind/src" -c "$unwind/src/Unwind-wasm.c" -o "$work/Unwind-wasm.o" &&
    llvm-ar-19 rcs "$out/lib/libunwind.a" "$work/Unwind-wasm.o" &&
    llvm-ar-19 d "$out/lib/libunwind.a" UnwindRegistersRestore.S.o UnwindRegistersSave.S.o
}

mkdir -p "$root/build/libraries"
exec 9>"$root/build/libraries/lock-wasm-runtime"
flock 9 || die "no lock in build/libraries"

recipe=$(cat "$0" tools/sources.sh cmake/wasm/* 2>/dev/null | cksum)
[ "$(cat "$out/recipe" 2>/dev/null)" = "$recipe" ] && exit
need_packages $wasm_packages
say "Building the runtime for WebAssembly"
rm -rf "$out" "$work"
mkdir -p "$work"
log=$work/runtime.log
derive_sources
fetch_parts >"$log" 2>&1 || die "the source of LLVM can't be had: $(tail -n 20 "$log")"
build_runtime >"$log" 2>&1 && add_unwinder >>"$log" 2>&1 ||
  die "the build of the runtime failed: $(tail -n 20 "$log")"
rm -rf "$work"
echo "$recipe" >"$out/recipe"
