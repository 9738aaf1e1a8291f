#!/bin/sh
# Installs what is missing, and builds and runs the tests of threads under the thread sanitizer.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $build_packages $test_packages
configure tsan -DQUOR_BUILD_HOST=OFF
make_targets tsan thread_tests
exec build/tsan/tests/thread_tests --gtest_brief=1
