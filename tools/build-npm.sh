#!/bin/sh
# Builds the module of WebAssembly and puts the package of npm together in npm/dist.
#   tools/build-npm.sh pack      packs it into dist/, too
set -u
. "$(dirname "$0")/lib.sh"

{ command -v npm && node -e 'process.exit(parseInt(process.versions.node) < 20 ? 1 : 0)'; } >/dev/null ||
  die "Node 20 or newer is missing, with its npm"
tools/build-wasm.sh || exit
cd npm || exit
! grep -q '"resolved"' package-lock.json || die "npm/package-lock.json names a registry"
npm ci --silent --no-audit --no-fund || die "npm can't install what the build needs"
rm -rf dist
npm run --silent build || die "the package could not be built"
cp ../build/wasm/npm/quor.wasm dist/ && cp ../LICENCE . || exit
[ "${1:-}" != pack ] || { mkdir -p ../dist && npm pack --silent --pack-destination ../dist; }
