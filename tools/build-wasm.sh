#!/bin/sh
# Installs what is missing and builds the module of WebAssembly, build/wasm/npm/quor.wasm, and the
# program of the digests.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $wasm_packages
tools/wasm-runtime.sh || exit
cmake --preset wasm >/dev/null || die "the configuration of 'wasm' failed"
quiet=--quiet
[ ! -t 1 ] || quiet=
cmake --build build/wasm -- $quiet || die "the build of 'wasm' failed"
