#!/bin/sh
# Installs what is missing, builds the module of WebAssembly, holds it to the digests, and builds, checks
# and tests the package of npm, in Node.
set -u
. "$(dirname "$0")/lib.sh"

tools/build-wasm.sh || exit
ctest --preset wasm || exit
tools/build-npm.sh || exit
cd npm || exit
npm run --silent check && npm test
