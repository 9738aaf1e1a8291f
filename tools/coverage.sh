#!/bin/sh
# Installs what is missing, runs the tests with counters, and prints which share of the lines and
# branches of src/ they reach, file by file, with the lines that none reaches.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $test_packages $coverage_packages
configure coverage -DQUOR_BUILD_HOST=OFF
make_targets coverage quor_tests
find build/coverage -name '*.gcda' -delete
build/coverage/tests/quor_tests --gtest_brief=1 || die "the tests fail"
gcovr --root . --filter src/ --exclude-throw-branches --print-summary build/coverage
