#!/bin/sh
# Builds the module of WebAssembly and puts the package of npm together in npm/dist.
#   tools/build-npm.sh pack      packs it into dist/, too
set -u
. "$(dirname "$0")/lib.sh"

command -v npm >/dev/null || die "npm is missing; it comes with Node 20"
tools/build-wasm.sh || exit
cd npm || exit
npm ci --silent --no-audit --no-fund || die "npm can't install what the build needs"
rm -rf dist
npm run --silent build || die "the package could not be built"
cp ../build/wasm/npm/quor.wasm dist/ || exit
[ "${1:-}" != pack ] || { mkdir -p ../dist && npm pack --silent --pack-destination ../dist; }
