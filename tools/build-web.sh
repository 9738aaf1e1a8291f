#!/bin/sh
# Installs what is missing, checks the page of `quor studio` and builds it, with its engine, into web/dist.
set -u
. "$(dirname "$0")/lib.sh"

for tool in node npm; do
  command -v "$tool" >/dev/null || need_packages nodejs npm
done
tools/build-wasm.sh studio_wasm || die "the page has no engine, which clang-19 and its parts build: $wasm_packages"
cd web || exit
npm ci --silent || die "the packages of the page can't be installed"
! grep -q '"resolved"' package-lock.json || die "web/package-lock.json names a registry"
! grep -rnE 'innerHTML|outerHTML|insertAdjacentHTML|document\.write' src ||
  die "the page would read texts as HTML"
npm run --silent check || die "the types of the page don't fit"
npm run --silent build || die "the page can't be built"
