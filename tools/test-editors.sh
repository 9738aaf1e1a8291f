#!/bin/sh
# Installs what is missing, builds quor, packs the extension, plays sessions of a client of the protocol
# against the language server, compares the grammar with its snapshots, and starts the packed extension.
#   tools/test-editors.sh [--renew]
# With --renew it writes the snapshots of the grammar anew.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages
for tool in node npm; do
  command -v "$tool" >/dev/null || need_packages nodejs npm
done
configure release
make_targets release quor
QUOR=$root/build/release/host/quor
export QUOR
cd editors/code || exit
npm ci --silent --ignore-scripts || die "the packages of the extension can't be installed"
! grep -q '"resolved"' package-lock.json || die "editors/code/package-lock.json names a registry"
if [ "${1-}" = --renew ]; then
  exec npm run --silent renew
fi
npm run --silent check || die "the types or the layout of the extension don't fit"
node build.mjs --package || die "the extension can't be packed"
npm run --silent test
