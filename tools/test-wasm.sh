#!/bin/sh
# Installs what is missing, builds the module of WebAssembly, holds it to the digests, and builds, checks
# and tests the package of npm, in Node and in a browser.
#   tools/test-wasm.sh [--quick]
# With --quick it leaves out the browser and what only takes long: scripts of a million letters.
set -u
. "$(dirname "$0")/lib.sh"

tools/build-wasm.sh || exit
ctest --preset wasm || exit
tools/build-npm.sh || exit
cd npm || exit
npm run --silent check && npm test --silent || exit
[ "${1-}" != --quick ] || exit 0
need_packages chromium $font_packages
CHROMIUM=$(command -v chromium) || die "there is no chromium"
export CHROMIUM
npm run --silent long && npm run --silent browser
