#!/bin/sh
# Installs what is missing, builds, and measures indicators beside plain loops, drawn lines beside
# exact loops and peers, intake and reading.
#   tools/bench.sh words     every word of the language instead, as a table
#   tools/bench.sh cycles    memory over 100,000 instances that come and go
#   tools/bench.sh wasm      the npm package beside the engine without it
#   tools/bench.sh scan      what research in Python costs, pandas beside it
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages
if [ "${1:-}" = wasm ]; then
  configure release -DQUOR_BUILD_BENCH=ON -DQUOR_BUILD_HOST=OFF -DQUOR_BUILD_TESTS=OFF
  make_targets release engine_bench
  tools/build-npm.sh || exit
  cd npm && exec npm run --silent bench -- ../build/release/bench/engine_bench
fi
need_packages $host_packages $test_packages
build release -DQUOR_BUILD_BENCH=ON
[ "${1:-}" != words ] || exec build/release/bench/word_bench
if [ "${1:-}" = scan ]; then
  python=/usr/bin/python3
  [ -x "$python" ] || python=python3
  need_packages $python_packages
  cmake --preset python -DPython_EXECUTABLE="$python" >/dev/null || die "the configuration failed"
  make_targets python quor_python
  PYTHONPATH=$root/build/python/python exec "$python" bench/scan_bench.py \
    build/release/host/quor build/release/bench/read_bench
fi
exec build/release/bench/quor_bench "$@"
