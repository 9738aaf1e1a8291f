#!/bin/sh
# Installs what is missing, cross-builds for 64-bit ARM, and runs the tests under an emulator.
#   tools/test-arm64.sh          the library: its tests and the digests
#   tools/test-arm64.sh all      everything
set -u
. "$(dirname "$0")/lib.sh"

need_packages $arm64_packages $arm64_test_packages
if [ "${1:-}" = all ]; then
  tools/build-arm64.sh || exit
else
  tools/build-arm64.sh -DQUOR_BUILD_HOST=OFF || exit
fi
timeout 1800 ctest --preset arm64
