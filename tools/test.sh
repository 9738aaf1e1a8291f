#!/bin/sh
# Installs what is missing, builds and runs all tests.
#   tools/test.sh [PRESET]    release by default; dev, asan
set -u
. "$(dirname "$0")/lib.sh"

preset=${1:-release}
need_packages $build_packages $host_packages $test_packages
build "$preset"
ctest --preset "$preset" -j "$(nproc)"
