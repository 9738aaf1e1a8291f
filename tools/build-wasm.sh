#!/bin/sh
# Installs what is missing and builds the modules of WebAssembly, build/wasm/npm/quor.wasm and that of the
# studio's page, build/wasm/web/studio.wasm, and the program of the digests.
#   tools/build-wasm.sh [TARGET...]      all of it, or these targets of CMake
set -u
. "$(dirname "$0")/lib.sh"

need_packages $wasm_packages
tools/wasm-runtime.sh || exit
cmake --preset wasm >/dev/null || die "the configuration of 'wasm' failed"
quiet=--quiet
[ ! -t 1 ] || quiet=
cmake --build build/wasm ${1:+--target "$@"} -- $quiet || die "the build of 'wasm' failed"
