#!/bin/sh
# Installs what is missing, cross-builds for 64-bit ARM, and runs tests under an emulator.
#   tools/test-arm64.sh          what is quick, and the packages
#   tools/test-arm64.sh all      everything
set -u
. "$(dirname "$0")/lib.sh"

need_packages $arm64_packages $arm64_test_packages
tools/build-arm64.sh || exit
# Threads and random inputs take the emulator minutes.
[ "${1:-}" = all ] || export GTEST_FILTER="$quick"
timeout 3600 ctest --preset arm64 || exit
