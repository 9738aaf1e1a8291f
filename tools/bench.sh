#!/bin/sh
# Installs what is missing, builds, and measures. Arguments go to the benchmark program, such as
#   tools/bench.sh --benchmark_filter=intake
# and "words" measures every word of the language instead, as a table.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $host_packages $test_packages $bench_packages
build release -DQUOR_BUILD_BENCH=ON
[ "${1:-}" != words ] || exec build/release/bench/word_bench
exec build/release/bench/quor_bench "$@"
