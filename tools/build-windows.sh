#!/bin/sh
# Installs what is missing and cross-builds the library, `quor` and the tests for 64-bit Windows, into
# build/windows/bin.
set -u
. "$(dirname "$0")/lib.sh"

need_packages $windows_packages $windows_test_packages
build windows
