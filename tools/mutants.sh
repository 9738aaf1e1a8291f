#!/bin/sh
# Damages the sources one place at a time and says which damages the unit tests don't notice.
#   tools/mutants.sh --count 60 --seed 3 src/core    options: tools/mutants.sh --help
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $test_packages
configure dev -B build/mutants -DCMAKE_CXX_FLAGS_DEBUG=-O1 -DQUOR_BUILD_HOST=OFF
cmake --build build/mutants --target quor_tests -- --quiet || die "the build of 'mutants' failed"
exec python3 tools/mutants.py "$@"
