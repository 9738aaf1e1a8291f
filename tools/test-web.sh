#!/bin/sh
# Installs what is missing, builds quor and its page, and tests the page: its parts in Node, the whole in
# a browser against `quor studio`.
#   tools/test-web.sh [--pictures]
# With --pictures it only draws the pictures of docs/ anew.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages $studio_packages $font_packages chromium
tools/build-web.sh || exit
configure release
make_targets release quor
QUOR=$root/build/release/host/quor
CHROMIUM=$(command -v chromium) || die "there is no chromium"
export QUOR CHROMIUM
cd web || exit
if [ "${1-}" = --pictures ]; then
  exec npm run --silent pictures
fi
npm run --silent unit && npm run --silent browser
