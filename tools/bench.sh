#!/bin/sh
# Installs what is missing, builds, and measures indicators beside plain loops, intake and reading.
#   tools/bench.sh words     every word of the language instead, as a table
#   tools/bench.sh cycles    memory over 100,000 instances that come and go
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages $test_packages
build release -DQUOR_BUILD_BENCH=ON
[ "${1:-}" != words ] || exec build/release/bench/word_bench
exec build/release/bench/quor_bench "$@"
